#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Qov/Jbf/FileIdentity.h"
#include "container/Descriptor.h"

namespace Qov::Tools {

/// Random access to the bytes of a file.
class FileBytes {
 public:
  /// Raises MiscellaneousError if this is not a readable regular file.
  explicit FileBytes(const std::string& path);

  std::uint64_t GetLength() const { return mIdentity->GetSize(); }
  /// Returns the state of the file when it was opened.
  const QovJbf::FileIdentity& GetIdentity() const { return *mIdentity; }
  bool Holds(std::uint64_t position, std::uint64_t size) const {
    return position <= GetLength() && size <= GetLength() - position;
  }
  /// Reads bytes that must be inside the file. Raises ReadError if that fails.
  void Read(std::uint64_t position, void* target, std::size_t n) const;
  /// Returns the descriptor, which other threads may read from.
  const std::shared_ptr<const QovJbf::Descriptor>& GetFile() const { return mpFile; }

 private:
  std::shared_ptr<const QovJbf::Descriptor> mpFile;
  std::optional<QovJbf::FileIdentity> mIdentity;
};

}  // namespace Qov::Tools
