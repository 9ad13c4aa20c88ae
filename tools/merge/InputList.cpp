#include "InputList.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <memory>
#include <utility>

#include "Qov/Util/Raise.h"
#include "diagnostics/Printable.h"

namespace Qov::Tools {
namespace {

using ErrorType = Util::Exception::ErrorType;

constexpr const char* kSource = "tools/merge/InputList";

/// Splits bytes into paths.
class ListReader {
 public:
  ListReader(std::string name, char separator) : mName(std::move(name)), mSeparator(separator) {}

  void Take(char byte) {
    if (byte == mSeparator) return EndEntry();
    if (byte == '\0') Refuse("contains a zero byte: use -0 for a list of that kind");
    mEntry += byte;
    if (mEntry.size() >= PATH_MAX) Refuse("is too long for a path");
  }
  std::vector<std::string> Finish() {
    EndEntry();
    if (mPaths.empty()) Util::Raise(kSource, ErrorType::ZeroLength, mName + " lists no paths");
    return std::move(mPaths);
  }

 private:
  void EndEntry() {
    ++mNumber;
    if (mSeparator == '\n' && mEntry.ends_with('\r')) mEntry.pop_back();  // lines end with CR LF
    if (!mEntry.empty()) mPaths.push_back(std::exchange(mEntry, {}));
  }
  [[noreturn]] void Refuse(const char* text) const {
    Util::Raise(kSource, ErrorType::FormatNotSupported,
                fmt::format("entry {} of {} {}", mNumber + 1, mName, text));
  }

  std::string mName;
  char mSeparator;
  std::size_t mNumber = 0;  ///< Entries that have ended.
  std::string mEntry;
  std::vector<std::string> mPaths;
};

}  // namespace

std::vector<std::string> ReadInputList(const std::string& path, char separator) {
  const bool isStandardInput = path == "-";
  const std::string name = isStandardInput ? "standard input" : Util::Quote(path);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> opened(
      isStandardInput ? nullptr : std::fopen(path.c_str(), "rbe"), &std::fclose);
  std::FILE* file = isStandardInput ? stdin : opened.get();
  const auto raise = [&] {
    Util::RaiseSystemFailure(kSource, ErrorType::ReadError, "cannot read " + name, errno);
  };
  if (file == nullptr) raise();
  ListReader reader(name, separator);
  std::array<char, 65536> bytes;
  while (const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file)) {
    for (std::size_t i = 0; i < count; ++i) reader.Take(bytes[i]);
  }
  if (std::ferror(file) != 0) raise();
  return reader.Finish();
}

}  // namespace Qov::Tools
