#include "tools/zrml/view/answer.h"

#include <bit>
#include <cstring>
#include <span>

#include "convert/base64.h"

namespace zrml::view {
namespace {

static_assert(std::endian::native == std::endian::little);  // arrays go out as they are in memory

constexpr std::size_t kAlignment = 8;

// The arrays of an answer one after the other, and their list: name, type, length.
struct Packed {
  Json list = Json::array();
  std::string bytes;

  template <class Number>
  void Add(std::string_view name, std::string_view type, const std::vector<Number>& numbers) {
    if (numbers.empty()) return;
    list.push_back({name, type, numbers.size()});
    bytes.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number));
    bytes.resize((bytes.size() + kAlignment - 1) / kAlignment * kAlignment);
  }
  void AddDoubles(std::string_view name, const std::vector<double>& numbers, bool isShort) {
    if (!isShort) return Add(name, "f8", numbers);
    Add(name, "f4", std::vector<float>(numbers.begin(), numbers.end()));
  }
};

Packed Pack(const Answer& answer, Numbers numbers) {
  Packed packed;
  packed.AddDoubles("x", answer.curve.x, numbers == Numbers::kShort);
  packed.AddDoubles("y", answer.curve.y, numbers != Numbers::kWhole);
  if (numbers == Numbers::kWhole) packed.Add("scans", "i4", answer.curve.scans);
  packed.Add("cells", "u1", answer.grid.cells);
  return packed;
}

Json FactsOf(const Answer& answer, const Packed& packed) {
  Json facts = answer.facts;
  if (!answer.grid.cells.empty()) {
    facts["columns"] = answer.grid.columns;
    facts["rows"] = answer.grid.rows;
  }
  facts["arrays"] = packed.list;
  return facts;
}

}  // namespace

std::string JsonText(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

std::string FrameOf(const Answer& answer, Numbers numbers) {
  const Packed packed = Pack(answer, numbers);
  std::string json = JsonText(FactsOf(answer, packed));
  json.resize((json.size() + kAlignment - 1) / kAlignment * kAlignment, ' ');
  const std::uint64_t length = json.size();
  std::string frame(sizeof length, '\0');
  std::memcpy(frame.data(), &length, sizeof length);
  return frame + json + packed.bytes;
}

std::string ScriptJson(const Json& json) {
  std::string text;
  for (const char c : JsonText(json)) c == '<' ? text += "\\u003c" : text += c;
  return text;
}

std::string ScriptOf(const Answer& answer, Numbers numbers) {
  const Packed packed = Pack(answer, numbers);
  std::string script = "{\"facts\":" + ScriptJson(FactsOf(answer, packed)) + ",\"data\":\"";
  convert::AppendBase64(std::as_bytes(std::span(packed.bytes)), script);
  return script + "\"}";
}

}  // namespace zrml::view
