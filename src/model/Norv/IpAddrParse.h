#pragma once

#include <string>
#include <string_view>

#include "Norv/IpGenAddr.h"

namespace Norv {

/// Reads an address. On bad text returns false, says in `why` what was found and in `want`, which
/// starts with "; expected ", what an address of the family that the text seems to mean looks like.
bool parseAddress(std::string_view text, IpGenAddr& value, std::string& why,
                  std::string_view& want);

}  // namespace Norv
