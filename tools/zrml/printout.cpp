#include "tools/zrml/printout.h"

#include "tools/zrml/names.h"

namespace zrml::tool {

Printout PrintoutOf(source::Source& source, int sample) {
  Printout printout;
  printout.Add({
      {"source", source.Path()},
      {"provider", ProviderName(source.GetFormat())},
      {"sample", sample + 1},
      {"sampleName", source.SampleName(sample)},
  });
  return printout;
}

Printout PrintoutOf(source::Source& source, const FunctionPosition& position) {
  const source::Function& function = FunctionAt(source, position);
  Printout printout = PrintoutOf(source, position.sample);
  printout.Add({{"function", ValueOf(function.id)}, {"functionName", function.name}});
  return printout;
}

void PrintText(const Printout& printout, Output& out) {
  for (const Attribute& attribute : printout.attributes) {
    if (IsAbsent(attribute.value)) continue;
    out.Text(
        std::string("# ").append(attribute.key).append(": ").append(TextOf(attribute.value)).append("\n"));
  }
  const auto separator = [&](const Column& column) {
    return &column == &printout.columns.back() ? "\n" : "\t";
  };
  for (const Column& column : printout.columns) {
    out.Text(column.name);
    out.Text(separator(column));
  }
  const std::size_t rows = printout.columns.front().values.size();
  for (std::size_t row = 0; row < rows; ++row) {
    for (const Column& column : printout.columns) {
      out.ShortNumber(column.values[row]);
      out.Text(separator(column));
    }
  }
}

void PrintJson(const Printout& printout, Output& out) {
  JsonWriter json(out);
  PutJson(printout, json);
  json.Finish();
}

void PutJson(const Printout& printout, JsonWriter& json) {
  json.Object([&] {
    json.Members(printout.attributes);
    for (const Column& column : printout.columns) json.Key(column.key).Numbers(column.values);
  });
}

}  // namespace zrml::tool
