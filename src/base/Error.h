#pragma once

#include <exception>
#include <string>

namespace korvex::base {

/// What every operation throws. The description is what the user is told, as it stands; the domain
/// and the code are for the log and for whoever must tell failures apart.
class Error : public std::exception {
public:
    Error(std::string domain, int code, std::string description)
        : m_domain(std::move(domain)), m_code(code), m_description(std::move(description)) {}

    const std::string& domain() const noexcept { return m_domain; }
    int code() const noexcept { return m_code; }
    const std::string& errorDescription() const noexcept { return m_description; }
    const char* what() const noexcept override { return m_description.c_str(); }

private:
    std::string m_domain;
    int m_code;
    std::string m_description;
};

/// For the log; 0 where it is none of ours.
inline std::string codeOf(const std::exception& error) {
    const auto* const ours = dynamic_cast<const Error*>(&error);
    return std::to_string(ours ? ours->code() : 0);
}

/// An error of one service: the service's enumeration, with its text.
/// `Case` needs overloads of `descriptionOf` and `domainOf` beside it.
template <typename Case>
class TypedError final : public Error {
public:
    explicit TypedError(Case which)
        : Error(domainOf(which), static_cast<int>(which), descriptionOf(which)), m_which(which) {}
    /// `advice`: what its user can do in this one's place, told on a line of its own.
    TypedError(Case which, const std::string& advice)
        : Error(domainOf(which), static_cast<int>(which), descriptionOf(which) + "\n" + advice),
          m_which(which) {}

    Case which() const noexcept { return m_which; }

private:
    Case m_which;
};

} // namespace korvex::base
