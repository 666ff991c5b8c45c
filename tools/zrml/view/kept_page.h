// A page to keep: one file of HTML with the data of a source inside, which asks for nothing.
#pragma once

#include <cstddef>
#include <string>

#include "source/source.h"
#include "tools/zrml/view/answers.h"

namespace zrml::view {

/// As large as `maxSize` bytes at most: curves and maps have fewer points until they fit, and what does not
/// even fit then is left out, which the page says. Only the page's own code and the list of samples have no
/// smaller form. What cannot be read is said in the page. Throws Cancelled, or a source::Error when not even
/// the samples can be read.
std::string MakeKeptPage(source::Source& source, std::size_t maxSize, const Work& work);

/// The page without data, for the server.
std::string LivePage();

/// The policy of the page for a header: scripts, styles and data from the own server only.
inline constexpr const char* kLivePolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src data: blob:; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

}  // namespace zrml::view
