#pragma once

#include <map>
#include <string>
#include <vector>

#include "Json.h"

namespace Qov::Test {

/// The members of a subcommand's documents, read from the tables of the page that describes them.
class JsonShape {
 public:
  using Json = Tools::Json;

  explicit JsonShape(const std::string& command);

  /// Returns the first error of the document, or an empty text.
  std::string Check(const Json& value, const std::string& type = "Document",
                    const std::string& place = "") const;

 private:
  struct Member {
    std::string mName;
    std::string mType;
    bool mOptional = false;
  };
  using Members = std::vector<Member>;

  void ReadPage(const std::string& page);
  std::string CheckAll(const Json& value, const std::string& type, const std::string& place,
                       bool list) const;
  std::string CheckObject(const Json& value, const Members& members,
                          const std::string& place) const;

  std::map<std::string, Members> mObjects;
};

}  // namespace Qov::Test
