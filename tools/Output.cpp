#include "Output.h"

#include <cerrno>
#include <cstring>
#include <string>

#include "Qov/Util/Raise.h"

namespace Qov::Tools {

void Output::HandleFailure() const {
  if (mLoss == Loss::Ignored) return;
  if (errno == EPIPE) throw ClosedPipe{};
  Util::Raise("tools/Output", Util::Exception::ErrorType::WriteError,
              std::string("Unable to write the output: ") + std::strerror(errno));
}

void Output::Write(std::string_view bytes) {
  if (bytes.empty()) return;  // an empty view may be null
  if (std::fwrite(bytes.data(), 1, bytes.size(), GetStream()) != bytes.size()) HandleFailure();
}

void Output::Line(std::string_view text) {
  Write(text);
  if (std::fputc('\n', GetStream()) == EOF) HandleFailure();
}

void Output::Flush() {
  if (std::fflush(GetStream()) != 0) HandleFailure();
}

}  // namespace Qov::Tools
