#include "StoredValues.h"

#include "Qov/Util/FileContext.h"
#include "diagnostics/ByteShuffle.h"

namespace Qov::Tools {

void StoredValues::Read(const QovRyx::NumericArray& array) {
  mShuffledWidth = 0;
  const auto& loader = array.GetLoader();
  if (!loader || loader->GetCount() == 0) return array.GetValues(mElements);
  mElements.resize(loader->GetCount());
  QovJbf::StreamReader& reader = loader->GetReader();
  Util::WithFileContext(reader.GetPath(), [&] {
    reader.ReadVerified(loader->GetOffset(), mElements.data(),
                        mElements.size() * sizeof(mElements[0]));
  });
  mShuffledWidth = loader->GetShuffledWidth();
}

const std::vector<std::uint32_t>& StoredValues::GetValues() {
  QovUtil::UnShuffleMultiVectorBytes(mElements, mShuffledWidth);
  mShuffledWidth = 0;
  return mElements;
}

}  // namespace Qov::Tools
