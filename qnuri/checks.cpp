// The validity of the components of a parsed text.
#include "qnuri/percent_encoding.h"
#include "qnuri/uri_parser.h"

namespace qnuri::impl {

using namespace chars;

namespace {

/// Returns the first position that neither holds a member of the class nor begins an escape. The
/// class holds the digits of an escape.
std::size_t find_first_invalid(std::string_view text, CharClass one_of) noexcept {
    std::size_t end = find_first_not(text, one_of);
    while (end < text.size() && is_escape(text, end)) {
        end = find_first_not(text, one_of, end + 1);
    }
    return end;
}

bool consists_of(std::string_view text, CharClass one_of) noexcept {
    return find_first_not(text, one_of) == text.size();
}

/// Tells whether a text holds only members of the class and escapes.
bool is_valid(std::string_view text, CharClass one_of) noexcept {
    return find_first_invalid(text, one_of) == text.size();
}

/// Checks a scheme with its ":" (RFC 3986, 3.1), or none.
bool valid_scheme(std::string_view scheme) noexcept {
    if (scheme.empty()) {
        return true;
    }
    scheme.remove_suffix(1);
    return !scheme.empty() && is(scheme[0], lower) &&
           consists_of(scheme.substr(1), lower | digit | scheme_punctuation);
}

/// Checks a query or a fragment with its prefix, or none.
bool valid_tail(std::string_view component) noexcept {
    return component.empty() || is_valid(component.substr(1), unreserved | reserved);
}

bool valid_userinfo(std::string_view userinfo, SchemeKind kind) noexcept {
    if (kind != SchemeKind::sip) {
        return is_valid(userinfo, unreserved | userinfo_punctuation);
    }
    const std::size_t end = find_first(userinfo, colon);
    return is_valid(userinfo.substr(0, end), unreserved | sip_user_punctuation) &&
           (end == userinfo.size() ||
            is_valid(userinfo.substr(end + 1), unreserved | sip_password_punctuation));
}

/// Checks what is between the brackets of a literal address: roughly the IPv6address of RFC 3986,
/// with the "%25" of RFC 6874.
bool valid_literal(std::string_view address) noexcept {
    if (address.size() < 2) {
        return false;
    }
    std::size_t end = find_first_not(address, hex | colon);
    while (address.substr(end).starts_with("%25")) {
        end = find_first_not(address, hex | colon, end + 3);
    }
    return end == address.size();
}

/// Checks a host, which may be empty, and a port, which may have no digits.
bool valid_host(std::string_view host, SchemeKind kind) noexcept {
    constexpr CharClass name = unreserved | host_punctuation;
    std::size_t end = 0;
    if (host.starts_with('[')) {
        const std::size_t closing = host.find(']');
        if (closing > host.size() || !valid_literal(host.substr(1, closing - 1))) {
            return false;
        }
        end = closing + 1;
    } else {
        end = kind == SchemeKind::sip ? find_first_not(host, name) : find_first_invalid(host, name);
    }
    return end == host.size() || (host[end] == ':' && consists_of(host.substr(end + 1), digit));
}

/// Checks a subscriber number (RFC 2806, 2.2): digits and separators, at least one digit.
bool valid_number(std::string_view number) noexcept {
    CharClass digits = hex | tel_symbol;
    if (number.starts_with('+')) {
        digits = digit;
        number.remove_prefix(1);
    }
    return consists_of(number, digits | tel_separator) &&
           find_first(number, digits) < number.size();
}

/// Checks the parameters of `sip` and `tel`.
bool valid_params(std::string_view params, SchemeKind kind) noexcept {
    const bool tel = kind == SchemeKind::tel;
    bool in_value = false;
    std::size_t name = 0;
    for (std::size_t i = find_first_not(params, alnum); i < params.size();
         i = find_first_not(params, alnum, i + 1)) {
        const char c = params[i];
        if (c == '-') {
            continue;
        }
        if (c == ';') {
            in_value = false;
            name = i + 1;
        } else if (c == '=') {
            if (in_value) {
                return false;
            }
            // Required: nothing is checked after "isub", a prefix of it, or an empty name.
            if (tel && std::string_view("isub").starts_with(params.substr(name, i - name))) {
                return true;
            }
            in_value = true;
        } else if ((tel && !in_value) ||
                   (!is(c, mark | sip_param_punctuation) && !is_escape(params, i))) {
            return false;
        }
    }
    return true;
}

} // namespace

void UriParser::check() {
    const auto check = [this](UriFlags bit, auto valid) {
        if ((known_valid_ & bit) == 0 && !valid()) {
            record_.flags |= bit;
        }
    };
    check(invalid_scheme, [this] { return valid_scheme(record_.view(record_.scheme)); });
    check(invalid_fragment, [this] { return valid_tail(record_.view(record_.fragment)); });
    check(invalid_authority, [this] { return valid_authority(); });
    check(invalid_path, [this] { return valid_path(); });
    check(invalid_query, [this] { return valid_tail(record_.view(record_.query)); });
    if ((record_.flags & (invalid_authority | invalid_path | invalid_query)) != 0) {
        record_.flags |= invalid_scheme_specific_part;
    }
}

bool UriParser::valid_authority() const noexcept {
    if (schemeKind_ == SchemeKind::tel) {
        return valid_number(record_.view(record_.authority));
    }
    const std::string_view authority = record_.view(record_.bare_authority());
    if (authority.empty()) {
        return true;
    }
    const std::size_t at = find_first(authority, at_sign);
    if (at == authority.size()) {
        return valid_host(authority, schemeKind_);
    }
    return valid_userinfo(authority.substr(0, at), schemeKind_) &&
           valid_host(authority.substr(at + 1), schemeKind_);
}

bool UriParser::valid_path() const noexcept {
    const std::string_view path = record_.view(record_.path);
    const bool params = schemeKind_ == SchemeKind::sip || schemeKind_ == SchemeKind::tel;
    return params ? valid_params(path, schemeKind_) : is_valid(path, path_component.plain);
}

} // namespace qnuri::impl
