#include "Qov/Util/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Qov::Util {

void FailAssertion(const char* text, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: assertion \"%s\" failed\n", file, line, text);
  std::abort();
}

}  // namespace Qov::Util
