#include "tools/zrml/report.h"

namespace zrml {

std::vector<Attribute> OriginOf(const Source& source, int sample) {
  CDataServerImpl& server = source.Server();
  return {
      {"source", source.Path()},
      {"provider", server.GetProviderName()},
      {"sample", sample + 1},
      {"sampleName", server.GetSampleName(sample)},
  };
}

std::vector<Attribute> OriginOf(const Source& source, const FunctionPosition& position) {
  Report origin{OriginOf(source, position.sample), {}};
  origin.Add({
      {"function", position.function + 1},
      {"functionName", source.Server().GetFunctionName(position.sample, position.function)},
  });
  return origin.attributes;
}

void PrintText(const Report& report, Output& out) {
  for (const Attribute& attribute : report.attributes) {
    if (IsAbsent(attribute.value)) continue;
    out.Text(
        std::string("# ").append(attribute.key).append(": ").append(TextOf(attribute.value)).append("\n"));
  }
  const auto separator = [&](const Column& column) {
    return &column == &report.columns.back() ? "\n" : "\t";
  };
  for (const Column& column : report.columns) {
    out.Text(column.name);
    out.Text(separator(column));
  }
  const std::size_t rows = report.columns.front().values.size();
  for (std::size_t row = 0; row < rows; ++row) {
    for (const Column& column : report.columns) {
      out.Number(column.values[row]);
      out.Text(separator(column));
    }
  }
}

void PrintJson(const Report& report, Output& out) {
  JsonWriter json(out);
  json.Object([&] {
    for (const Attribute& attribute : report.attributes) WriteJson(attribute.value, json.Key(attribute.key));
    for (const Column& column : report.columns) json.Key(column.key).Numbers(column.values);
  });
  json.Finish();
}

}  // namespace zrml
