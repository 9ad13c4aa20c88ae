#include "CLocale.h"

namespace Qov::Util {

locale_t GetCLocale() {
  static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

}  // namespace Qov::Util
