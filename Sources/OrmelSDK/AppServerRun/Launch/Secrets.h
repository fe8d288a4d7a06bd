#pragma once

#include <map>
#include <string>
#include <string_view>

namespace ormel::detail {

/// Whether the value of a variable of this name is nobody else's business: it has KEY, TOKEN, SECRET, PASSWORD or the
/// like in it, in whatever case.
bool isSecretName(std::string_view name);

/// The variables with "***" for the values of secrets, and for the user and password within addresses.
std::map<std::string, std::string> withMaskedSecrets(std::map<std::string, std::string> environment);

/// At most the first `limit` bytes of `text`, with "***" for each value of a secret of the environment.
std::string startWithoutSecrets(std::string_view text, std::size_t limit,
                                const std::map<std::string, std::string>& environment);

}  // namespace ormel::detail
