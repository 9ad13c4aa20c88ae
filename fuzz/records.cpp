#include <array>
#include <concepts>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Qov/Ryx/BlockVersionedIo.h"
#include "Target.h"
#include "records/FileVersionScope.h"
#include "support/RecordTypes.h"

/// Reads one record. The input is:
///   type: u8
///   version of the file: u8
///   the bytes of the record
/// An accepted record is unchanged after writing and reading. It is written as the bytes that were
/// read, unless the writer updates, sorts or leaves out a part of it.
namespace {

using namespace Qov::Fuzz;

constexpr std::array kVersions = {"0.1", "0.1a", "0.1b", "0.2", "0.3", "0.4", "0.5",
                                  "0.6", "0.7",  "1.0",  "1.1", "1.2", "1.3"};

constexpr std::size_t kNumVersionsWithoutSizes = 4;

bool HasSizes(const char* version) {
  for (std::size_t i = 0; i < kNumVersionsWithoutSizes; ++i) {
    if (std::strcmp(version, kVersions[i]) == 0) return false;
  }
  return true;
}

QovJbf::Block MakeBlock(const std::uint8_t* bytes, std::size_t size) {
  QovJbf::Block block;
  block.AllocateAdditionalMemory(size + 1);
  block.Put(bytes, static_cast<std::uint32_t>(size));
  block.SetPosition(0);
  return block;
}

bool HaveSameBytes(const QovJbf::Block& a, const QovJbf::Block& b) {
  return a.GetSize() == b.GetSize() &&
         (a.GetSize() == 0 || std::memcmp(a.GetData(), b.GetData(), a.GetSize()) == 0);
}

/// Reads a record and checks that it has the form that the writer gives it: with sizes, current
/// tags, keys in ascending order and no zero bytes in texts.
class FormCheck {
 public:
  FormCheck(QovJbf::Block& block, const std::string& tag, bool& isWrittenForm)
      : mBlock(block), mLadder(tag), mIsWrittenForm(isWrittenForm) {}

  FormCheck& Rung(std::string_view rung) {
    mOpen = mLadder.Reaches(rung);
    return *this;
  }
  template <class T>
  FormCheck& Field(const char* /*name*/, T& value) {
    if (mOpen) Read(value);
    return *this;
  }

  template <class T>
  void Read(T& value) {
    if constexpr (QovJbf::VersionedRecord<T> && !QovJbf::OpaqueRecordType<T>) {
      QovJbf::FrameReader frame(mBlock);
      FormCheck nested(mBlock, frame.GetTag(), mIsWrittenForm);
      Require(QovJbf::RungLadder(frame.GetTag()).Reaches(T::kTag) || frame.GetTag() == T::kTag);
      T::Walk(value, nested);
      frame.Close();
    } else {
      CopyFromBlock(mBlock, value);
    }
  }
  void Read(std::string& value) {
    const std::uint32_t start = mBlock.GetPosition();
    CopyFromBlock(mBlock, value);
    Require(mBlock.GetPosition() - start == sizeof start + value.size());
  }
  template <class T>
  requires QovJbf::VersionedRecord<T> || std::same_as<T, std::string>
  void Read(std::vector<T>& /*values*/) {
    for (std::uint32_t left = ReadCount(); left > 0; --left) ReadNew<T>();
  }
  template <class T>
  void Read(std::map<std::string, T>& /*values*/) {
    std::string last;
    const std::uint32_t count = ReadCount();
    for (std::uint32_t i = 0; i < count; ++i) {
      std::string key;
      Read(key);
      Require(i == 0 || last < key);
      ReadNew<T>();
      last = key;
    }
  }
  void Read(QovRyx::ActionList& /*actions*/) {
    std::vector<std::uint16_t> types;
    CopyFromBlock(mBlock, types);
    for (const std::uint16_t type : types) ReadAction(type);
  }

 private:
  void Require(bool isSo) { mIsWrittenForm = mIsWrittenForm && isSo; }
  std::uint32_t ReadCount() {
    std::uint32_t count = 0;
    CopyFromBlock(mBlock, count);
    return count;
  }
  template <class T>
  void ReadNew() {
    T value{};
    Read(value);
  }
  void ReadAction(std::uint16_t type) {
    switch (type) {
      case QovRyx::RotateAction::kType:
        return ReadNew<QovRyx::RotateAction>();
      case QovRyx::MoveAction::kType:
        return ReadNew<QovRyx::MoveAction>();
      case QovRyx::TransformAction::kType:
        return ReadNew<QovRyx::TransformAction>();
      case QovRyx::ApplyColorAction::kType:
        return ReadNew<QovRyx::ApplyColorAction>();
      case QovRyx::ApplyViewPointAction::kType:
        return ReadNew<QovRyx::ApplyViewPointAction>();
      case QovRyx::PlayAudioAction::kType:
        return ReadNew<QovRyx::PlayAudioAction>();
      default:
        return ReadNew<QovRyx::UnknownAction>();
    }
  }

  QovJbf::Block& mBlock;
  QovJbf::RungLadder mLadder;
  bool& mIsWrittenForm;
  bool mOpen = false;
};

template <class Record>
bool HasWrittenForm(QovJbf::Block& input) {
  bool isWrittenForm = true;
  Record record;
  input.SetPosition(0);
  FormCheck(input, "", isWrittenForm).Read(record);
  return isWrittenForm;
}

template <class Record>
void ReadRecord(const char* version, const std::uint8_t* bytes, std::size_t size) {
  Record record;
  QovJbf::Block input = MakeBlock(bytes, size);
  std::uint32_t length = 0;
  bool hasWrittenForm = false;
  const bool isSound = Accepts([&] {
    const QovRyx::FileVersionScope scope(version);
    CopyFromBlock(input, record);
    length = input.GetPosition();
    hasWrittenForm = HasSizes(version) && HasWrittenForm<Record>(input);
  });
  if (!isSound) return;
  QovJbf::Block written;
  QovJbf::Block writtenAgain;
  const bool isKept = Accepts([&] {
    CopyToBlock(written, record);
    written.SetPosition(0);
    Record again;
    CopyFromBlock(written, again);
    CopyToBlock(writtenAgain, again);
  });
  Require(isKept, "a record that was accepted can be written and read");
  Require(HaveSameBytes(written, writtenAgain), "a record is written and read without a change");
  if (!hasWrittenForm) return;
  Require(written.GetSize() == length && std::memcmp(written.GetData(), bytes, length) == 0,
          "a record is written as the bytes that were read");
}

using Reader = void (*)(const char*, const std::uint8_t*, std::size_t);

template <class... Records>
struct Readers {
  static constexpr std::array<Reader, sizeof...(Records)> kAll = {&ReadRecord<Records>...};
};
constexpr const auto& kReaders = Qov::Test::EveryRecordIn<Readers>::kAll;

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const Reader reader = kReaders[data[0] % kReaders.size()];
  const char* version = kVersions[data[1] % kVersions.size()];
  reader(version, data + 2, size - 2);
  return 0;
}
