// The uuencode form of the customer file.
#ifndef VELOXCTL_KEYDISK_CUSTOMER_CODE_H
#define VELOXCTL_KEYDISK_CUSTOMER_CODE_H

#include <string>
#include <string_view>

namespace veloxctl::keydisk {

// False when the file is no whole uuencoded text.
bool DecodeCustomerFile(std::string_view file, std::string *text);

std::string EncodeCustomerFile(std::string_view text);

}  // namespace veloxctl::keydisk

#endif  // VELOXCTL_KEYDISK_CUSTOMER_CODE_H
