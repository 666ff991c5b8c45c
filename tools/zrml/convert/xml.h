// Text as XML 1.0 takes it, UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace zrml {

/// `text` for an attribute between double quotes: markup, tabs and line ends as references; characters that
/// XML forbids and what is no character as U+FFFD.
std::string XmlText(std::wstring_view text);

/// The same for UTF-8 that is well-formed.
std::string XmlText(std::string_view utf8);

/// `text` for use inside an xs:ID, behind a letter: ASCII letters, digits, '_', '-' and '.' stay, others
/// become '_'. Identifiers are unique in a document, so what stands in front must not begin another one.
std::string XmlIdPart(std::wstring_view text);

}  // namespace zrml
