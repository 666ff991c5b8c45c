// Dates as XML takes them.
#pragma once

#include <string_view>

namespace zrml {

/// Whether `text` is a day that there is and a time of it, with the zone "+00:00": an xs:dateTime of the form
/// that providers give. They copy what the acquisition has written, so it may be anything.
bool IsXmlDateTime(std::wstring_view text);

}  // namespace zrml
