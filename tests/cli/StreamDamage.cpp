#include "StreamDamage.h"

#include <gtest/gtest.h>

#include <sstream>

namespace Qov::Test {
namespace {

std::size_t PlaceIn(const std::string& bytes, const std::string& place) {
  if (place == "end") return bytes.size();
  const std::size_t plus = place.find('+');
  if (plus == place.npos) return std::stoul(place);
  const std::size_t name = bytes.find(place.substr(0, plus));
  EXPECT_NE(name, bytes.npos) << place;
  return name + plus + std::stoul(place.substr(plus + 1));
}

}  // namespace

void Damage(std::string& bytes, const std::string& damage) {
  std::istringstream words(damage);
  std::string place;
  std::string what;
  std::string hex;
  std::string with;
  words >> place >> what >> hex;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    with += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  const std::size_t at = PlaceIn(bytes, place);
  bytes.replace(at, what == "=" ? with.size() : what == "+" ? 0 : bytes.npos, with);
}

std::string DamageStreams(Streams& streams, const std::string& damages) {
  std::istringstream list(damages);
  std::string fileDamage;
  for (std::string one; std::getline(list >> std::ws, one, ';');) {
    const std::string name = one.substr(0, one.find(": "));
    const std::string damage = one.substr(name.size() + 2);
    if (name == "file") {
      fileDamage = damage;
    } else if (damage == "gone") {
      streams.erase(name);
    } else {
      Damage(streams[name], damage);
    }
  }
  return fileDamage;
}

}  // namespace Qov::Test
