#include "tools/zrml/printout.h"

#include "tools/zrml/names.h"

namespace zrml::tool {

std::vector<Attribute> OriginOf(source::Source& source, int sample) {
  return {
      {"source", source.Path()},
      {"provider", ProviderName(source.GetFormat())},
      {"sample", sample + 1},
      {"sampleName", source.SampleName(sample)},
  };
}

std::vector<Attribute> OriginOf(source::Source& source, const FunctionPosition& position) {
  const source::Function& function =
      source.Functions(position.sample)[static_cast<std::size_t>(position.function)];
  Printout origin{OriginOf(source, position.sample), {}};
  origin.Add({
      {"function", ValueOf(function.id)},
      {"functionName", function.name},
  });
  return origin.attributes;
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
      out.Number(column.values[row]);
      out.Text(separator(column));
    }
  }
}

void PrintJson(const Printout& printout, Output& out) {
  JsonWriter json(out);
  json.Object([&] {
    for (const Attribute& attribute : printout.attributes)
      WriteJson(attribute.value, json.Key(attribute.key));
    for (const Column& column : printout.columns) json.Key(column.key).Numbers(column.values);
  });
  json.Finish();
}

}  // namespace zrml::tool
