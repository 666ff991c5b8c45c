#include "tools/zrml/view/requests.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "common/platform/platform.h"
#include "tools/zrml/view/kept_page.h"
#include "tools/zrml/view/page_files.h"

namespace zrml::view {
namespace {

constexpr const char* kBinary = "application/octet-stream";
constexpr const char* kJson = "application/json";

struct PublicFile {
  std::string_view target;
  const char* type;
  std::string (*text)();
};

// The page and its scripts, which hold no data.
constexpr std::array<PublicFile, 4> kFiles = {{
    {"/", "text/html; charset=utf-8", LivePage},
    {"/page.css", "text/css; charset=utf-8", [] { return std::string(kPageStyle.text); }},
    {"/page.js", "text/javascript; charset=utf-8", [] { return std::string(kPageScript.text); }},
    {"/uplot.js", "text/javascript; charset=utf-8", [] { return std::string(kPlotScript.text); }},
}};

Response Refusal(unsigned status, const std::string& text) { return {.status = status, .body = text + "\n"}; }

// "/data/0/map?function=1": the run, and the question.
bool ReadTarget(std::string_view target, Job& job) {
  constexpr std::string_view kData = "/data/";
  if (!target.starts_with(kData)) return false;
  target.remove_prefix(kData.size());
  const auto [end, error] = std::from_chars(target.data(), target.data() + target.size(), job.run);
  target.remove_prefix(static_cast<std::size_t>(end - target.data()));
  if (error != std::errc() || !target.starts_with('/')) return false;
  const std::optional<Question> question = Question::Parse(target.substr(1));
  if (question) job.question = *question;
  return question.has_value();
}

}  // namespace

std::string MakeToken() {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string token;
  for (int word = 0; word < 4; ++word) {
    std::uint32_t bits = platform::RandomNumber();
    for (int digit = 0; digit < 8; ++digit, bits >>= 4) token += kDigits[bits & 0xF];
  }
  return token;
}

Requests::Requests(Workers& workers, unsigned short port, std::string token)
    : workers_(workers), port_(std::to_string(port)), token_(std::move(token)) {}

std::optional<Response> Requests::Answer(const Request& request, Job& job) {
  if (!IsOwnHost(request)) return Refusal(403, "This is not the host of zrml view.");
  if (!request.isGet) return Refusal(405, "Only GET is answered.");
  for (const PublicFile& file : kFiles) {
    if (file.target == request.target) return Response{.type = file.type, .body = file.text()};
  }
  if (!HasToken(request)) return Refusal(403, "The token is missing or wrong.");
  return AnswerWithData(request, job);
}

std::optional<Response> Requests::AnswerWithData(const Request& request, Job& job) {
  if (request.target == "/runs")
    return Response{.type = kJson, .body = JsonText({{"runs", workers_.RunCount()}})};
  if (request.target == "/progress")
    return Response{.type = kJson, .body = JsonText(workers_.SharesOf(request.asker.tab))};
  if (!ReadTarget(request.target, job)) return Refusal(404, "There is no such page.");
  job.asker = request.asker;
  return std::nullopt;
}

Response Requests::ResponseOf(Reply reply) {
  switch (reply.kind) {
    case Reply::Kind::kSuperseded:
      return Refusal(409, "A newer question has taken the place of this one.");
    case Reply::Kind::kWrong:
      return Refusal(400, "This question has no answer.");
    case Reply::Kind::kAnswer:
      break;
  }
  return {.type = kBinary, .body = std::move(reply.frame)};
}

// As a whole: a name that only begins like the own one may be anybody's.
bool Requests::IsOwnHost(const Request& request) const {
  return request.hosts == 1 && (request.host == "127.0.0.1:" + port_ || request.host == "localhost:" + port_);
}

// Takes as long for a token of the right length whatever is in it.
bool Requests::HasToken(const Request& request) const {
  if (request.token.size() != token_.size()) return false;
  unsigned difference = 0;
  for (std::size_t i = 0; i < token_.size(); ++i)
    difference |= static_cast<unsigned>(request.token[i] ^ token_[i]);
  return difference == 0;
}

}  // namespace zrml::view
