// Which components of a parsed text are valid.
#include "qnuri/uri_parser.h"

namespace qnuri::impl {

namespace {

bool consists_of(std::string_view text, CharClass one_of) noexcept {
    return find_first_not(text, one_of) == text.size();
}

/// Characters of the class and escapes alone.
bool is_valid(std::string_view text, CharClass one_of) noexcept {
    return find_first_invalid(text, one_of) == text.size();
}

/// RFC 3986, 3.1, of a scheme with its ":", if there is one.
bool valid_scheme(std::string_view scheme) noexcept {
    if (scheme.empty()) {
        return true;
    }
    scheme.remove_suffix(1);
    return !scheme.empty() && is(scheme[0], alpha) &&
           consists_of(scheme.substr(1), lower | digit | scheme_punctuation);
}

/// A query or a fragment with its prefix, if there is one.
bool valid_tail(std::string_view component) noexcept {
    return component.empty() || is_valid(component.substr(1), unreserved | reserved);
}

bool valid_userinfo(std::string_view userinfo, SchemeKind kind) noexcept {
    if (kind != SchemeKind::sip) {
        return is_valid(userinfo, unreserved | userinfo_punctuation);
    }
    const std::size_t colon = find_or_end(userinfo, ':');
    return is_valid(userinfo.substr(0, colon), unreserved | sip_user_punctuation) &&
           (colon == userinfo.size() ||
            is_valid(userinfo.substr(colon + 1), unreserved | sip_password_punctuation));
}

/// What stands between the brackets of a literal address: roughly RFC 3986's IPv6address, with the
/// "%25" of RFC 6874.
bool valid_literal(std::string_view address) noexcept {
    if (address.size() < 2) {
        return false;
    }
    while (!address.empty()) {
        if (address[0] == ':' || is(address[0], hex)) {
            address.remove_prefix(1);
        } else if (address.starts_with("%25")) {
            address.remove_prefix(3);
        } else {
            return false;
        }
    }
    return true;
}

/// A host that may be empty, and a port whose digits may be missing.
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

/// A subscriber number (RFC 2806, 2.2): digits and separators, at least one digit.
bool valid_number(std::string_view number) noexcept {
    CharClass digits = hex | tel_symbol;
    if (number.starts_with('+')) {
        digits = digit;
        number.remove_prefix(1);
    }
    return consists_of(number, digits | tel_separator) &&
           find_first(number, digits) < number.size();
}

/// Parameters of `sip` and `tel`.
bool valid_params(std::string_view params, SchemeKind kind) noexcept {
    const bool tel = kind == SchemeKind::tel;
    bool in_value = false;
    std::size_t name = 0;
    for (std::size_t i = 0; i < params.size(); ++i) {
        const char c = params[i];
        if (c == ';') {
            in_value = false;
            name = i + 1;
        } else if (c == '=') {
            if (in_value) {
                return false;
            }
            // Required: behind "isub", any start of it and an empty name, nothing is looked at.
            if (tel && std::string_view("isub").starts_with(params.substr(name, i - name))) {
                return true;
            }
            in_value = true;
        } else if (!is(c, alnum) && c != '-') {
            const bool other = is(c, mark | sip_param_punctuation) || is_escape(params, i);
            if (!other || (tel && !in_value)) {
                return false;
            }
        }
    }
    return true;
}

} // namespace

void UriParser::check() {
    const auto flag = [this](bool valid, UriFlags bit) { record_.flags |= valid ? 0U : bit; };
    record_.flags = 0;
    flag(valid_scheme(record_.view(record_.scheme)), invalid_scheme);
    flag(valid_tail(record_.view(record_.fragment)), invalid_fragment);
    flag(valid_authority(), invalid_authority);
    flag(valid_path(), invalid_path);
    flag(valid_tail(record_.view(record_.query)), invalid_query);
    flag((record_.flags & (invalid_authority | invalid_path | invalid_query)) == 0,
         invalid_scheme_specific_part);
}

bool UriParser::valid_authority() const noexcept {
    if (schemeKind_ == SchemeKind::tel) {
        return valid_number(record_.view(record_.authority));
    }
    const std::string_view authority = record_.view(record_.bare_authority());
    const std::size_t at = authority.find('@');
    if (at > authority.size()) {
        return valid_host(authority, schemeKind_);
    }
    return valid_userinfo(authority.substr(0, at), schemeKind_) &&
           valid_host(authority.substr(at + 1), schemeKind_);
}

bool UriParser::valid_path() const noexcept {
    const std::string_view path = record_.view(record_.path);
    const bool params = schemeKind_ == SchemeKind::sip || schemeKind_ == SchemeKind::tel;
    return params ? valid_params(path, schemeKind_) : is_valid(path, unreserved | path_punctuation);
}

} // namespace qnuri::impl
