#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "Qov/Ryx/Sequencer.h"
#include "Qov/Ryx/ViewPoint.h"

namespace Qov::Test {

/// Fills the fields up to the version `tag`, in nested records too, with random values. Numbers and
/// flags get any bit pattern.
class RandomFiller {
 public:
  RandomFiller(std::uint32_t seed, std::string_view tag) : mRandom(seed), mTag(tag), mLadder(tag) {}

  RandomFiller& Rung(std::string_view rung) {
    mOpen = mLadder.Reaches(rung);
    return *this;
  }
  template <class T>
  RandomFiller& Field(const char* /*name*/, T& value) {
    if (mOpen) Fill(value);
    return *this;
  }

 private:
  std::uint32_t Next() { return static_cast<std::uint32_t>(mRandom()); }
  std::uint32_t NextCount() { return Next() % 3; }

  /// Fills numbers, vectors and colours with random bits.
  template <class T>
  requires std::is_arithmetic_v<T> || std::is_same_v<T, QovRyx::Vector3> ||
      std::is_same_v<T, QovRyx::ColourValue>
  void Fill(T& value) {
    std::array<unsigned char, sizeof(T)> bytes{};
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(Next());
    value = std::bit_cast<T>(bytes);
  }
  void Fill(std::string& value) {
    value.resize(Next() % 6);
    for (char& c : value) c = static_cast<char>(1 + Next() % 255);
  }
  template <class T, std::size_t N>
  void Fill(std::array<T, N>& values) {
    for (T& value : values) Fill(value);
  }
  template <class T>
  void Fill(std::vector<T>& values) {
    values.resize(NextCount());
    for (T& value : values) Fill(value);
  }
  template <class V>
  void Fill(std::map<std::string, V>& values) {
    for (std::uint32_t i = NextCount(); i > 0; --i) {
      std::string key;
      Fill(key);
      Fill(values[key]);
    }
  }
  template <QovJbf::VersionedRecord T>
  void Fill(T& record) {
    if constexpr (QovJbf::OpaqueRecordType<T>) {
      Fill(record.mTag);
      Fill(record.mBody);
    } else {
      RandomFiller nested(Next(), mTag);
      T::Walk(record, nested);
    }
  }
  template <class T>
  void AddAction(QovRyx::ActionList& actions) {
    auto action = std::make_unique<T>();
    Fill(*action);
    actions.mSlots.push_back(std::move(action));
  }
  void Fill(QovRyx::ActionList& actions) {
    AddAction<QovRyx::PlayAudioAction>(actions);
    AddAction<QovRyx::RotateAction>(actions);
    actions.mSlots.push_back(nullptr);
    actions.mSlots.push_back(
        std::make_unique<QovRyx::UnknownAction>(static_cast<std::uint16_t>(6 + Next() % 60000)));
    AddAction<QovRyx::ApplyColorAction>(actions);
  }

  std::mt19937 mRandom;
  std::string mTag;
  QovJbf::RungLadder mLadder;
  bool mOpen = false;
};

/// Returns a record with random fields up to the version `tag` and defaults after it.
template <class T>
T RandomRecord(std::uint32_t seed, std::string_view tag = "all") {
  T record;
  RandomFiller filler(seed, tag);
  T::Walk(record, filler);
  return record;
}

}  // namespace Qov::Test
