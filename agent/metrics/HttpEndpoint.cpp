#include "agent/metrics/HttpEndpoint.h"

#include <civetweb.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <new>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace agent {

struct HttpEndpoint::Context {
  Pages pages;
  std::string lastError;  // of the start; not written later
  std::atomic<bool> started{false};
  mg_context* server = nullptr;
};

namespace {

// The server's limits. A client that stalls occupies one of the threads until the timeout.
constexpr const char* kLimits[] = {"num_threads",      "4",    "request_timeout_ms", "2000",
                                   "max_request_size", "8192", "connection_queue",   "16",
                                   "listen_backlog",   "16",   "enable_keep_alive",  "no"};

constexpr std::chrono::milliseconds kStopInterval{5};

// Keeps the server's reason for a failed start; the server prints nothing.
int keepError(const mg_connection* connection, const char* message) noexcept {
  auto* const context =
      static_cast<HttpEndpoint::Context*>(mg_get_user_data(mg_get_context(connection)));
  try {
    if (context != nullptr && !context->started && context->lastError.empty()) {
      context->lastError = message;
    }
  } catch (const std::bad_alloc&) {
    return 1;
  }
  return 1;
}

// The system's reason in a message of the server, "cannot bind to ADDRESS: NUMBER (REASON)".
std::string reasonIn(const std::string& message) {
  const std::size_t begin = message.rfind('(');
  if (message.find("invalid port spec") != std::string::npos) {
    return "the host has no IPv4 address";
  }
  return begin != std::string::npos && message.back() == ')'
             ? message.substr(begin + 1, message.size() - begin - 2)
             : message;
}

HttpAnswer answerTo(const HttpEndpoint::Pages& pages, std::string_view method,
                    const std::string& path) {
  if (method != "GET" && method != "HEAD") {
    return {405, "text/plain; charset=utf-8", "only GET and HEAD are possible\n"};
  }
  const auto page = pages.find(path);
  if (page == pages.end()) {
    return {404, "text/plain; charset=utf-8", "there is no such page\n"};
  }
  return page->second();
}

void send(mg_connection* connection, const HttpAnswer& answer, bool withBody) {
  std::string text = "HTTP/1.1 " + std::to_string(answer.status) + " " +
                     mg_get_response_code_text(connection, answer.status) +
                     "\r\nContent-Type: " + answer.contentType +
                     "\r\nContent-Length: " + std::to_string(answer.body.size()) +
                     "\r\nCache-Control: no-store\r\nConnection: close\r\n\r\n";
  if (withBody) {
    text += answer.body;
  }
  mg_write(connection, text.data(), text.size());
}

// A callback of the server, so no exception may pass.
int serve(mg_connection* connection) noexcept {
  const mg_request_info* const request = mg_get_request_info(connection);
  try {
    const auto& pages = static_cast<const HttpEndpoint::Context*>(request->user_data)->pages;
    const std::string_view method = request->request_method;
    const std::string path = request->local_uri == nullptr ? "" : request->local_uri;
    send(connection, answerTo(pages, method, path), method != "HEAD");
  } catch (const std::exception&) {
    mg_send_http_error(connection, 500, "%s", "the page cannot be made");
  }
  return 1;
}

void connectUntil(const std::atomic<bool>& stopped, const orb::Endpoint& endpoint) noexcept {
  while (!stopped) {
    std::array<char, 100> error{};
    mg_connection* const connection =
        mg_connect_client(endpoint.host.c_str(), endpoint.port, 0, error.data(), error.size());
    if (connection != nullptr) {
      mg_close_connection(connection);
    }
    std::this_thread::sleep_for(kStopInterval);
  }
}

}  // namespace

HttpEndpoint::HttpEndpoint(const orb::Endpoint& endpoint, Pages pages)
    : endpoint_(endpoint), context_(std::make_unique<Context>()) {
  context_->pages = std::move(pages);
  const std::string address = orb::format(endpoint);
  std::vector<const char*> options(std::begin(kLimits), std::end(kLimits));
  options.insert(options.end(), {"listening_ports", address.c_str(), nullptr});
  mg_callbacks callbacks{};
  callbacks.begin_request = serve;
  callbacks.log_message = keepError;
  std::array<char, 256> reason{};
  unsigned code = 0;
  mg_error_data error{&code, reason.data(), reason.size()};
  mg_init_data start{&callbacks, context_.get(), options.data()};
  mg_init_library(0);
  context_->server = mg_start2(&start, &error);
  if (context_->server == nullptr) {
    mg_exit_library();
    throw HttpError("cannot serve metrics on " + address + ": " +
                    reasonIn(context_->lastError.empty() ? reason.data() : context_->lastError));
  }
  context_->started = true;
  mg_server_port port{};
  if (mg_get_server_ports(context_->server, 1, &port) == 1) {
    endpoint_.port = static_cast<std::uint16_t>(port.port);
  }
}

// The server's accepting thread looks for the stop at a new connection, or every 2 seconds.
HttpEndpoint::~HttpEndpoint() {
  std::thread awakening;
  std::atomic<bool> stopped{false};
  try {
    awakening = std::thread([this, &stopped] { connectUntil(stopped, endpoint_); });
  } catch (const std::system_error&) {
    // The stop takes longer.
  }
  mg_stop(context_->server);
  stopped = true;
  if (awakening.joinable()) {
    awakening.join();
  }
  mg_exit_library();
}

}  // namespace agent
