#include "app/MergeOptions.h"

namespace Qov {

std::optional<QovRyx::InstanceNaming> MergeOptions::GetNaming() const {
  if (!mAsInstances) return std::nullopt;
  for (const MergeOption& option : kMergeOptions) {
    if (option.mNaming && this->*option.mpFlag) return option.mNaming;
  }
  return QovRyx::InstanceNaming::Plain;
}

std::vector<std::string> MergeOptions::GetNames() const {
  std::vector<std::string> names;
  for (const MergeOption& option : kMergeOptions) {
    if (this->*option.mpFlag) names.emplace_back(option.mName);
  }
  return names;
}

const char* NameOf(QovRyx::InstanceNaming naming) {
  for (const MergeOption& option : kMergeOptions) {
    if (option.mNaming == naming) return option.mKind;
  }
  return "instances";
}

std::vector<MergeOptions> ListMergeKinds() {
  const MergeOptions asInstances{.mAsInstances = true};
  std::vector<MergeOptions> kinds = {{}, asInstances};
  for (const MergeOption& option : kMergeOptions) {
    if (option.mNaming) (kinds.emplace_back(asInstances)).*option.mpFlag = true;
  }
  return kinds;
}

}  // namespace Qov
