// Dates in XML's form.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zrml::convert {

/// `text` as an xs:dateTime when it is a valid date and time, without a zone: sources have the time of
/// the instrument's clock. They copy what the acquisition has written, so it may be anything; a day is read
/// as "2026-11-4", year first, or as "4-Nov-2026". Ambiguous dates are not read.
std::optional<std::string> XmlDateTime(std::string_view text);

}  // namespace zrml::convert
