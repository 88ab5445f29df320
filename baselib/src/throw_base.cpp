#include "base/throw_base.h"

namespace std {
const std::string c_empty;
}  // namespace std

namespace {

// The base library's own errors (ids below 25).
CbaseTransl::TtabTransl const kBaseTable[] = {
    {CthrowBase::ERR_UNKNOWN, "CthrowBase::ERR_UNKNOWN", "Unbekannter Fehler."},
    {0, nullptr, nullptr},
};

CbaseTransl::TtabTransl const kUndefined = {-1, "CthrowBase::ERR_UNDEFINED",
                                            "Unbekannte Fehlernummer."};

}  // namespace

// ---------------------------------------------------------------------------------------------
// CtranslatorBase

// The stream is never copied: it is empty between conversions.
CtranslatorBase::CtranslatorBase(CtranslatorBase const& other) : m_args(other.m_args) {}

CtranslatorBase& CtranslatorBase::operator=(CtranslatorBase const& other) {
    m_args = other.m_args;
    return *this;
}

CtranslatorBase::~CtranslatorBase() = default;

void CtranslatorBase::appendText(std::string_view text) { m_args.emplace_back(text); }

std::string CtranslatorBase::fillPlaceholders(char const* text) const {
    std::string out;
    if (text == nullptr) {
        return out;
    }
    for (char const* c = text; *c != '\0'; ++c) {
        if (c[0] == '%' && c[1] >= '0' && c[1] <= '9') {
            std::size_t const k = static_cast<std::size_t>(c[1] - '0');
            if (k < m_args.size()) {
                out += m_args[k];
                ++c;
                continue;
            }
        }
        out += *c;
    }
    return out;
}

// ---------------------------------------------------------------------------------------------
// CthrowBase

CthrowBase::CthrowBase(int id, std::string const& extra) : m_id(id), m_extra(extra) {}

CthrowBase::CthrowBase(std::string const& context, int id, std::string const& extra)
    : m_id(id), m_context(context), m_extra(extra) {}

CthrowBase::CthrowBase(CthrowBase const& cause, int id, std::string const& extra)
    : m_id(id), m_extra(extra), m_cause(cause.clone()) {}

CthrowBase::CthrowBase(CthrowBase const& cause, std::string const& context, int id,
                       std::string const& extra)
    : m_id(id), m_context(context), m_extra(extra), m_cause(cause.clone()) {}

CthrowBase::CthrowBase(std::string const& context, int id, std::string const& extra, bool flag)
    : m_id(id), m_context(context), m_extra(extra), m_warning(flag) {}

CthrowBase::CthrowBase(CthrowBase const& cause, std::string const& context, int id,
                       std::string const& extra, bool flag)
    : m_id(id), m_context(context), m_extra(extra), m_cause(cause.clone()), m_warning(flag) {}

CthrowBase::CthrowBase(CthrowBase const& other)
    : CtranslatorBase(other),
      std::exception(other),
      m_id(other.m_id),
      m_context(other.m_context),
      m_extra(other.m_extra),
      m_cause(other.m_cause ? other.m_cause->clone() : nullptr),
      m_file(other.m_file),
      m_line(other.m_line),
      m_warning(other.m_warning) {}

CthrowBase& CthrowBase::operator=(CthrowBase const& other) {
    if (this != &other) {
        CtranslatorBase::operator=(other);
        m_id = other.m_id;
        m_context = other.m_context;
        m_extra = other.m_extra;
        m_cause.reset(other.m_cause ? other.m_cause->clone() : nullptr);
        m_file = other.m_file;
        m_line = other.m_line;
        m_warning = other.m_warning;
    }
    return *this;
}

CthrowBase::~CthrowBase() = default;

void CthrowBase::setExInfo(std::string const& file, int line) {
    m_file = file;
    m_line = line;
}

std::string CthrowBase::message() const { return fillPlaceholders(id2tab(m_id).text); }

CthrowBase::operator std::string() const {
    CbaseTransl::TtabTransl const& row = id2tab(m_id);
    std::string text = row.idName != nullptr ? row.idName : "";
    text += " (" + std::to_string(m_id) + "): ";
    text += m_context;
    text += fillPlaceholders(row.text);
    if (!m_extra.empty()) {
        text += ' ';
        text += m_extra;
    }
    if (!m_file.empty()) {
        text += "\n  at " + m_file + ':' + std::to_string(m_line);
    }
    if (m_warning) {
        text += "\n  warning";
    }
    if (m_cause) {
        text += "\ncaused by: ";
        text += static_cast<std::string>(*m_cause);
    }
    return text;
}

char const* CthrowBase::what() const noexcept {
    try {
        m_what = static_cast<std::string>(*this);
        return m_what.c_str();
    } catch (...) {
        return "CthrowBase";
    }
}

CbaseTransl::TtabTransl const& CthrowBase::id2tab(int id) const {
    for (CbaseTransl::TtabTransl const* row = kBaseTable; row->idName != nullptr; ++row) {
        if (row->id == id) {
            return *row;
        }
    }
    return kUndefined;
}

CthrowBase* CthrowBase::clone() const { return new CthrowBase(*this); }

void CthrowBase::throw_this() const { throw CthrowBase(*this); }
