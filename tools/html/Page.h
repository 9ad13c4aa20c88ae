#pragma once

#include <string_view>

namespace Qov::Tools {

/// The template of a page, cut at the places of its data. A page is
///
///     mBeforeTitle     title, as the text of an HTML element
///     mBeforeManifest  manifest, as JSON without "<"
///     mBeforeBuffers   for each buffer:
///                      <script type="application/octet-stream" id="data-N">BASE64</script>
///     mEnd
///
/// The Content-Security-Policy of the page has the hashes of its script and of its style, and
/// nothing else may run. The data are in script elements that are not executed because of their
/// type.
struct PageTemplate {
  std::string_view mBeforeTitle;
  std::string_view mBeforeManifest;
  std::string_view mBeforeBuffers;
  std::string_view mEnd;
};

/// Returns the template, which the build embeds from the files in tools/html/page/.
PageTemplate GetPageTemplate();

}  // namespace Qov::Tools
