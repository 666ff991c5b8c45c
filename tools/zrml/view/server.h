// Serves the page and its data over HTTP to this machine alone. The page and its scripts hold no data; what
// asks for data must have the token, which only the printed address has.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "source/source.h"

namespace zrml::view {

class Server {
 public:
  /// Listens on 127.0.0.1, on a free port when `port` is 0. Throws an Error when that is impossible.
  Server(std::vector<std::string> runs, unsigned short port);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  /// What to open in a browser: it has the token behind "#", which browsers do not send.
  std::string Address() const;

  /// Serves until `stop`, which is asked several times a second, also while there is work.
  void Run(const source::Cancel& stop);

 private:
  class State;
  std::unique_ptr<State> state_;
};

}  // namespace zrml::view
