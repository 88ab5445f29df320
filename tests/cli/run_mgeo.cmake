# Runs one mgeo command line for CTest and checks its exit status and output.
#   CMD         the command and its arguments, separated by "@@"
#   RC          the expected exit status
#   MATCH, MATCH2, MATCH3   regular expressions that standard output + error must contain
#   NOMATCH     a regular expression the output must not contain
#   STDIN       a file fed to standard input
#   FILE        a file the command must have written; FILE_MATCH a regular expression its
#               contents must contain; FILE_LINES its expected number of lines
string(REPLACE "@@" ";" cmd "${CMD}")
if(FILE)
  file(REMOVE "${FILE}")
endif()
set(input_args)
if(STDIN)
  set(input_args INPUT_FILE "${STDIN}")
endif()
execute_process(COMMAND ${cmd} ${input_args} RESULT_VARIABLE rc OUTPUT_VARIABLE out
                ERROR_VARIABLE err TIMEOUT 120)
set(all "${out}${err}")
message("exit status ${rc}\n--- standard output\n${out}--- standard error\n${err}---")
if(NOT "${rc}" STREQUAL "${RC}")
  message(FATAL_ERROR "expected exit status ${RC}, got ${rc}")
endif()
foreach(var MATCH MATCH2 MATCH3)
  if(DEFINED ${var} AND NOT "${${var}}" STREQUAL "")
    if(NOT all MATCHES "${${var}}")
      message(FATAL_ERROR "output does not match '${${var}}'")
    endif()
  endif()
endforeach()
if(NOMATCH AND all MATCHES "${NOMATCH}")
  message(FATAL_ERROR "output matches '${NOMATCH}'")
endif()
if(FILE)
  if(NOT EXISTS "${FILE}")
    message(FATAL_ERROR "${FILE} was not written")
  endif()
  file(READ "${FILE}" content)
  if(FILE_MATCH AND NOT content MATCHES "${FILE_MATCH}")
    message(FATAL_ERROR "${FILE} does not match '${FILE_MATCH}'")
  endif()
  if(FILE_LINES)
    file(STRINGS "${FILE}" lines)
    list(LENGTH lines n)
    if(NOT n EQUAL FILE_LINES)
      message(FATAL_ERROR "${FILE} has ${n} lines, expected ${FILE_LINES}")
    endif()
  endif()
endif()
