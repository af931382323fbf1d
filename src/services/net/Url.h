// The parts of an address, read by the same parser that sends the requests.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vmr {

/// An absolute address with a host. Texts are as written; only the scheme is in lower case.
struct Url {
    std::string scheme;
    std::string host;       ///< without the brackets of an IPv6 address
    std::string port;       ///< decimal; the scheme's own (80 or 443) when the address names none
    std::string target;     ///< path and query, beginning with "/"
    bool secure = false;    ///< `wss:` or `https:`
    bool loopback = false;  ///< localhost, 127.0.0.0/8 or ::1
    bool namesPort = false;
    std::string user, password;  ///< of "user:password@host", unescaped; usually empty

    /// The host, in brackets if it is IPv6, and the port, always.
    std::string hostAndPort() const;

    /// What an HTTP Host header says: the host, in brackets if it is IPv6, and the port unless it is the scheme's own.
    std::string authority() const;
};

/// Nothing for text that is no absolute address (blanks and control characters included).
std::optional<Url> parseUrl(const std::string& text);

/// `text` with ASCII letters in lower case.
std::string lowerCase(std::string_view text);

/// UTF-8 bytes of `text` as %XX in upper-case hexadecimal, but for ASCII letters, digits and what `kept` lists.
std::string percentEncoded(std::string_view text, std::string_view kept);

/// What may stand unescaped in the query of an address.
inline constexpr std::string_view queryCharacters = "-._~!$&'()*+,;=:@/?";

/// What may stand unescaped in one value of a query: never a separator.
inline constexpr std::string_view queryValueCharacters = "-._~";

}  // namespace vmr
