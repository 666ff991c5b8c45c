#include "convert/mzml_params.h"

#include <array>
#include <charconv>
#include <cmath>

#include "common/number_text.h"
#include "convert/xml.h"

namespace zrml::convert {

void AppendAttribute(std::string& out, std::string_view name, std::string_view xmlText) {
  out += ' ';
  out += name;
  out.append("=\"", 2);  // with its length: a spectrum has some hundred attributes
  out += xmlText;
  out += '"';
}

void AppendAttribute(std::string& out, std::string_view name, std::size_t number) {
  std::array<char, 24> text;
  const auto result = std::to_chars(text.data(), text.data() + text.size(), number);
  AppendAttribute(out, name, {text.data(), result.ptr});
}

void AppendCvParam(std::string& out, const CvTerm& term, std::string_view value, const CvTerm* unit) {
  out += "<cvParam";
  AppendAttribute(out, "cvRef", term.Vocabulary());
  AppendAttribute(out, "accession", term.accession);
  AppendAttribute(out, "name", term.name);
  if (!value.empty()) AppendAttribute(out, "value", value);
  if (unit != nullptr) {
    AppendAttribute(out, "unitCvRef", unit->Vocabulary());
    AppendAttribute(out, "unitAccession", unit->accession);
    AppendAttribute(out, "unitName", unit->name);
  }
  out += "/>\n";
}

void AppendCvNumber(std::string& out, const CvTerm& term, double value, const CvTerm* unit) {
  AppendCvParam(out, term, Number(value), unit);
}

void AppendFiniteCvNumber(std::string& out, const CvTerm& term, double value, const CvTerm* unit) {
  if (std::isfinite(value)) AppendCvNumber(out, term, value, unit);
}

void AppendUserParam(std::string& out, std::string_view name, std::string_view value) {
  out += "<userParam";
  AppendAttribute(out, "name", XmlText(name));
  AppendAttribute(out, "type", "xsd:string");
  AppendAttribute(out, "value", XmlText(value));
  out += "/>\n";
}

std::string NativeId(const source::FunctionId& function, int scan) {
  constexpr int kProcessNumbers = 1 << 16;
  const int process = function.process == 0 ? 0 : function.process + (function.repeat - 1) * kProcessNumbers;
  return "function=" + std::to_string(function.number) + " process=" + std::to_string(process) +
         " scan=" + std::to_string(scan);
}

}  // namespace zrml::convert
