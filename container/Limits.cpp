#include "Limits.h"

#include <cstdlib>

#include "ContainerFormat.h"

namespace QovJbf {

std::uint32_t ReadSizeVariable(const char* name, std::uint32_t otherwise) {
  const char* text = std::getenv(name);
  if (text == nullptr) return otherwise;
  const unsigned long value = std::strtoul(text, nullptr, 10);
  return value < kLargestBlock ? static_cast<std::uint32_t>(value) : otherwise;
}

}  // namespace QovJbf
