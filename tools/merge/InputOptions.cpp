#include "InputOptions.h"

#include <CLI/App.hpp>
#include <utility>

#include "InputList.h"
#include "Qov/Util/Raise.h"

namespace Qov::Tools {

void InputOptions::Declare(CLI::App& app, std::vector<std::string>& inputs, const char* help) {
  mpInputs = &inputs;
  app.add_option("INPUT", inputs, help);
  app.add_option("--from", mLists,
                 "Read paths of further inputs from FILE, one a line; - is "
                 "standard input")
      ->type_name("FILE")
      ->allow_extra_args(false);
  app.add_flag("-0,--null", mIsZeroSeparated, "Paths in FILE end with a zero byte, not a newline");
}

void InputOptions::ReadLists() {
  for (const std::string& list : mLists) {
    for (std::string& path : ReadInputList(list, GetSeparator())) {
      mpInputs->push_back(std::move(path));
    }
  }
  if (!mpInputs->empty()) return;
  Util::Raise("tools/merge/InputOptions", Util::Exception::ErrorType::ZeroLength,
              "there are no inputs: name models, or a list of them with --from");
}

}  // namespace Qov::Tools
