#include "tools/zrml/view/server.h"

#include <array>
#include <atomic>
#include <boost/asio.hpp>
#include <boost/beast/core.hpp>
#include <boost/beast/http.hpp>
#include <utility>

#include "convert/error.h"
#include "tools/zrml/view/kept_page.h"
#include "tools/zrml/view/requests.h"

namespace zrml::view {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;
using ErrorCode = boost::system::error_code;

constexpr int kWorkers = 4;
constexpr int kMostConnections = 500;
constexpr unsigned kMostHeaderBytes = 16 * 1024;
constexpr std::chrono::seconds kPatience(30);            // with a client that sends or takes nothing
constexpr std::chrono::milliseconds kBetweenLooks(100);  // at whether to stop

// Nothing is kept, and nothing of the page goes anywhere else.
constexpr std::array<std::pair<const char*, const char*>, 5> kSafeHeaders = {{
    {"Cache-Control", "no-store"},
    {"Content-Security-Policy", kLivePolicy},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
}};

}  // namespace

class Server::State {
 public:
  State(std::vector<std::string> runs, unsigned short port)
      : acceptor_(context_),
        timer_(context_),
        port_(Listen(port)),
        token_(MakeToken()),
        workers_(std::move(runs), kWorkers),
        requests_(workers_, port_, token_) {}

  std::string Address() const { return "http://127.0.0.1:" + std::to_string(port_) + "/#token=" + token_; }

  void Run(const source::Cancel& stop) {
    stop_ = stop;
    WaitBetweenLooks();
    Accept();
    context_.run();
  }

 private:
  class Session;

  unsigned short Listen(unsigned short port) {
    const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
    try {
      acceptor_.open(endpoint.protocol());
#ifndef _WIN32  // where it would let two programs have one port
      acceptor_.set_option(asio::socket_base::reuse_address(true));
#endif
      acceptor_.bind(endpoint);
      acceptor_.listen();
      return acceptor_.local_endpoint().port();
    } catch (const boost::system::system_error& error) {
      throw convert::Error(convert::ErrorKind::kSystem, "cannot listen on port " + std::to_string(port) +
                                                            " (" + error.code().message() + ")");
    }
  }

  // What waits for an event names the function that goes on from there: nothing calls itself.
  void WaitBetweenLooks() {
    timer_.expires_after(kBetweenLooks);
    timer_.async_wait(beast::bind_front_handler(&State::LookWhetherToStop, this));
  }
  void LookWhetherToStop(ErrorCode) {
    if (stop_()) return context_.stop();
    if (!isAccepting_) Accept();
    WaitBetweenLooks();
  }

  void Accept() {
    isAccepting_ = true;
    acceptor_.async_accept(beast::bind_front_handler(&State::Serve, this));
  }
  void Serve(ErrorCode error, tcp::socket socket);

  asio::io_context context_{1};
  tcp::acceptor acceptor_;
  asio::steady_timer timer_;
  unsigned short port_;
  std::string token_;
  source::Cancel stop_;
  bool isAccepting_ = false;
  std::atomic<int> connections_ = 0;  // a worker may be the last one to let go of one
  Workers workers_;
  Requests requests_;
};

// One connection: a request, its response, and the next one.
class Server::State::Session : public std::enable_shared_from_this<Session> {
 public:
  Session(tcp::socket socket, State& state) : stream_(std::move(socket)), state_(state) {
    ++state_.connections_;
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session() { --state_.connections_; }

  void Read() {
    parser_.emplace();
    parser_->header_limit(kMostHeaderBytes);
    parser_->body_limit(boost::none);  // never read
    stream_.expires_after(kPatience);
    http::async_read_header(stream_, buffer_, *parser_,
                            beast::bind_front_handler(&Session::Answer, shared_from_this()));
  }

 private:
  Request RequestOf() const {
    const auto& message = parser_->get();
    const auto text = [&](const char* name) { return std::string(message[name]); };
    return {.isGet = message.method() == http::verb::get,
            .hosts = static_cast<int>(message.count(http::field::host)),
            .host = text("Host"),
            .target = std::string(message.target()),
            .token = text("X-Zrml-Token"),
            .asker = {text("X-Zrml-Tab"), text("X-Zrml-Lane")}};
  }

  void Answer(ErrorCode error, std::size_t) {
    if (error) return;
    const auto job = std::make_shared<Job>();
    if (std::optional<Response> response = state_.requests_.Answer(RequestOf(), *job))
      return Write(std::move(*response));
    stream_.expires_never();
    // Called by a worker; the rest goes on here.
    job->reply = [self = shared_from_this()](Reply reply) {
      asio::post(self->stream_.get_executor(),
                 beast::bind_front_handler(&Session::Write, self, Requests::ResponseOf(std::move(reply))));
    };
    WatchForEnd(job);
    state_.workers_.Ask(job);
  }

  void WatchForEnd(const std::shared_ptr<Job>& job) {
    stream_.socket().async_wait(
        tcp::socket::wait_read,
        beast::bind_front_handler(&Session::LookForEnd, shared_from_this(), std::weak_ptr<Job>(job)));
  }

  // A client that has gone waits for nothing. But the system may also wake a socket for bytes that have been
  // read already.
  void LookForEnd(const std::weak_ptr<Job>& asked, ErrorCode error) {
    const std::shared_ptr<Job> job = asked.lock();
    if (!job || error) return;
    char byte = 0;
    stream_.socket().non_blocking(true, error);
    stream_.socket().receive(asio::buffer(&byte, 1), tcp::socket::message_peek, error);
    if (error == asio::error::would_block) return WatchForEnd(job);
    if (error) state_.workers_.Cancel(job);
  }

  void Write(Response response) {
    response_.emplace(static_cast<http::status>(response.status), 11);
    response_->set(http::field::content_type, response.type);
    for (const auto& [name, value] : kSafeHeaders) response_->set(name, value);
    response_->keep_alive(parser_->get().keep_alive() && parser_->is_done());  // a body is no next request
    response_->body() = std::move(response.body);
    response_->prepare_payload();
    ErrorCode ignored;
    stream_.socket().cancel(ignored);  // no longer watched
    stream_.expires_after(kPatience);
    http::async_write(stream_, *response_, beast::bind_front_handler(&Session::GoOn, shared_from_this()));
  }

  void GoOn(ErrorCode error, std::size_t) {
    if (!error && response_->keep_alive()) Read();
  }

  beast::tcp_stream stream_;
  State& state_;
  beast::flat_buffer buffer_{kMostHeaderBytes};
  std::optional<http::request_parser<http::empty_body>> parser_;
  std::optional<http::response<http::string_body>> response_;
};

void Server::State::Serve(ErrorCode error, tcp::socket socket) {
  isAccepting_ = false;
  if (error) return;  // such as too many open files, until the next look
  if (connections_ < kMostConnections) std::make_shared<Session>(std::move(socket), *this)->Read();
  Accept();
}

Server::Server(std::vector<std::string> runs, unsigned short port)
    : state_(std::make_unique<State>(std::move(runs), port)) {}

Server::~Server() = default;

std::string Server::Address() const { return state_->Address(); }

void Server::Run(const source::Cancel& stop) { state_->Run(stop); }

}  // namespace zrml::view
