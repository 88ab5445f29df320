// Exception root of the base library: error ids resolved through translation tables, message
// arguments streamed into the exception, a context text, a nested cause and the place the error
// passed.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace std {
// The shared empty text that throwers pass as the `extra` argument of an exception.
extern const std::string c_empty;
}  // namespace std

class CthrowBase;

struct CbaseTransl {
    // One row of an error table. A table is a static array of rows ended by {0, nullptr, nullptr}.
    struct TtabTransl {
        std::int32_t id;     // error id
        char const* idName;  // "Class::ERR_NAME"
        char const* text;    // Latin-1 message with placeholders %0, %1, %2
    };
};

// Holds the argument list of a message and the stream that turns one value into text.
// Its virtual operations are the interface through which a stored error is read and re-raised.
class CtranslatorBase {
public:
    CtranslatorBase() = default;
    CtranslatorBase(CtranslatorBase const& other);
    CtranslatorBase& operator=(CtranslatorBase const& other);
    virtual ~CtranslatorBase();

    virtual CbaseTransl::TtabTransl const& id2tab(int id) const = 0;
    virtual operator std::string() const = 0;
    virtual CthrowBase* clone() const = 0;
    virtual void throw_this() const = 0;

    // The streamed arguments, in the order they were streamed; argument k fills %k.
    std::vector<std::string> const& arguments() const { return m_args; }

    // Appends a text argument; always adds one, an empty text included.
    void appendText(std::string_view text);

    // Writes a value with the stream's default formatting and appends the text when it is not
    // empty. The stream is emptied afterwards, so every value is converted on its own.
    template <typename V>
    void appendValue(V const& value) {
        m_stream << value;
        std::string text = m_stream.str();
        if (!text.empty()) {
            m_args.push_back(std::move(text));
        }
        m_stream.str(std::string());
        m_stream.clear();
    }

protected:
    // The table text with %0 ... %9 replaced by the arguments; a placeholder without an argument
    // stays as it is.
    std::string fillPlaceholders(char const* text) const;

private:
    std::vector<std::string> m_args;
    std::ostringstream m_stream;
};

// The root of every exception of the library.
//
// id()       the error id; id2tab(id()) gives its name and message text
// message()  the table text with the placeholders filled, nothing else
// what(), operator std::string()  the composed text, one line per part:
//     <idName> (<id>): <context><message>[ <extra>]
//     [  at <file>:<line>]            when setExInfo was called (the last call wins)
//     [  warning]                     when the protected flag was set
//     [caused by: <what() of cause>]  when the error keeps a cause
//   e.g. "CthrowMath::ERR_MATRIX_DIMS (29): Dimensionen der übergebene Matrix sind ungültig
//   (m:2,n:3). Erwartet wird eine 3x3- oder 4x4-Matrix.\n  at solver_svd.cpp:42"
// extra      a free text appended to the message in what(); std::c_empty for none
// flag       (protected constructors) marks the error as a warning: it is reported, not fatal
//
// Ids below 25 belong to the base library (ERR_UNKNOWN = 1); an id no table knows resolves to
// the row {-1, "CthrowBase::ERR_UNDEFINED", "Unbekannte Fehlernummer."}.
class CthrowBase : public CtranslatorBase, public std::exception {
public:
    enum { ERR_UNKNOWN = 1 };

    CthrowBase(int id, std::string const& extra);
    CthrowBase(std::string const& context, int id, std::string const& extra);
    CthrowBase(CthrowBase const& cause, int id, std::string const& extra);
    CthrowBase(CthrowBase const& cause, std::string const& context, int id,
               std::string const& extra);
    CthrowBase(CthrowBase const& other);
    CthrowBase& operator=(CthrowBase const& other);
    ~CthrowBase() override;

    int id() const { return m_id; }
    std::string const& context() const { return m_context; }
    std::string const& extra() const { return m_extra; }
    std::string const& file() const { return m_file; }
    int line() const { return m_line; }
    bool isWarning() const { return m_warning; }
    // The causing error, or nullptr.
    CthrowBase const* cause() const { return m_cause.get(); }

    // Records the source file (a base name) and line at which the error passed.
    void setExInfo(std::string const& file, int line);

    std::string message() const;
    char const* what() const noexcept override;

    CbaseTransl::TtabTransl const& id2tab(int id) const override;
    operator std::string() const override;
    CthrowBase* clone() const override;
    void throw_this() const override;

protected:
    CthrowBase(std::string const& context, int id, std::string const& extra, bool flag);
    CthrowBase(CthrowBase const& cause, std::string const& context, int id,
               std::string const& extra, bool flag);

private:
    int m_id;
    std::string m_context;
    std::string m_extra;
    std::unique_ptr<CthrowBase> m_cause;
    std::string m_file;
    int m_line = 0;
    bool m_warning = false;
    mutable std::string m_what;  // storage for what()
};

// Streams a message argument into an exception and returns the exception for chaining:
// texts always add an argument (an empty one too), other values add their text when it is
// not empty. The k-th value streamed fills %k.
template <typename E, typename V,
          typename = std::enable_if_t<std::is_base_of_v<CthrowBase, std::remove_reference_t<E>>>>
E&& operator<<(E&& error, V const& value) {
    if constexpr (std::is_convertible_v<V const&, std::string_view>) {
        error.appendText(std::string_view(value));
    } else {
        error.appendValue(value);
    }
    return std::forward<E>(error);
}
