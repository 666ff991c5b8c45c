// Text for XML 1.0, in UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace zrml::convert {

/// `text` for an attribute between double quotes: markup, tabs and line ends as references; characters that
/// XML forbids, and bytes that are not UTF-8, as U+FFFD.
std::string XmlText(std::string_view text);

/// `text` for use inside an xs:ID, after a letter: ASCII letters, digits, '_', '-' and '.' stay, others
/// become '_'. Identifiers are unique in a document, so the part before it must not begin another one.
std::string XmlIdPart(std::string_view text);

}  // namespace zrml::convert
