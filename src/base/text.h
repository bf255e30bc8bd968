#ifndef ZEL_SRC_BASE_TEXT_H_
#define ZEL_SRC_BASE_TEXT_H_

#include <string>

namespace ZEL {

/// `value` in fixed notation as printf's "%.<digits>f" writes it in the C locale, whatever locale the host
/// has set.
std::string fixedText(double value, int digits = 6);

}  // namespace ZEL

#endif  // ZEL_SRC_BASE_TEXT_H_
