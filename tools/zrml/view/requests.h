// Which requests the server answers, apart from how they travel.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tools/zrml/view/workers.h"

namespace zrml::view {

/// What counts of a request; empty texts where it has no such header.
struct Request {
  bool isGet = false;
  int hosts = 1;  ///< how many Host headers
  std::string host = {};
  std::string target = {};
  std::string token = {};
  Asker asker = {};
};

struct Response {
  unsigned status = 200;
  std::string type = "text/plain; charset=utf-8";
  std::string body = {};
};

/// Random digits, which nobody can guess.
std::string MakeToken();

class Requests {
 public:
  /// `workers` is used only while this lives.
  Requests(Workers& workers, unsigned short port, std::string token);

  /// The response, or no value for a question, which then is in `job` and without its reply.
  std::optional<Response> Answer(const Request& request, Job& job);

  static Response ResponseOf(Reply reply);

 private:
  bool IsOwnHost(const Request& request) const;
  bool HasToken(const Request& request) const;
  std::optional<Response> AnswerWithData(const Request& request, Job& job);

  Workers& workers_;
  std::string port_;
  std::string token_;
};

}  // namespace zrml::view
