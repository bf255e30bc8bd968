#include "serve/http_server.h"

#include <array>
#include <civetweb.h>
#include <exception>
#include <fmt/format.h>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "serve/quiet_thread.h"

namespace zel_monitor {
namespace {

// A client that says nothing holds a thread for the time-out, so there are many threads and little time.
constexpr std::array kOptions = {
    "num_threads",
    "32",
    "request_timeout_ms",
    "2000",
    "connection_queue",
    "256",
    "listen_backlog",
    "256",
    "max_request_size",
    "8192",
    "enable_keep_alive",
    "no",
    "enable_directory_listing",
    "no",
    "enable_auth_domain_check",
    "no",
};

/// Pages hold their own scripts and styles, and fetch from nowhere but here.
constexpr std::string_view kSafety =
    "Content-Security-Policy: default-src 'none'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; "
    "img-src 'self' data:; connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors "
    "'none'\r\n"
    "X-Content-Type-Options: nosniff\r\nReferrer-Policy: no-referrer\r\n";

/// The library counts its users.
class Library {
  public:
    Library() { mg_init_library(MG_FEATURES_DEFAULT); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    ~Library() { mg_exit_library(); }
};

std::string_view wordsFor(int status) {
    switch (status) {
        case 200:
            return "OK";
        case 204:
            return "No Content";
        case 404:
            return "Not Found";
        case 405:
            return "Method Not Allowed";
        case 503:
            return "Service Unavailable";
        default:
            return status < 500 ? "Bad Request" : "Internal Server Error";
    }
}

}  // namespace

HttpServer::HttpServer(const std::string& address, Handler handler)
    : address_(address), handler_(std::move(handler)) {
    static const Library library;
    mg_callbacks callbacks = {};
    callbacks.log_message = &HttpServer::log;
    callbacks.http_error = &HttpServer::fail;
    std::vector<const char*> options(kOptions.begin(), kOptions.end());
    options.insert(options.end(), {"listening_ports", address_.c_str(), nullptr});
    const SignalsBlocked blocked;
    context_ = mg_start(&callbacks, this, options.data());
    if (context_ == nullptr) {
        throw std::runtime_error("cannot listen on " + address_ +
                                 "; is the address this machine's, and the port free?");
    }
    mg_set_request_handler(context_, "/", &HttpServer::answer, this);
}

HttpServer::~HttpServer() {
    mg_stop(context_);
}

int HttpServer::port() const {
    mg_server_port port = {};
    return mg_get_server_ports(context_, 1, &port) == 1 ? port.port : 0;
}

int HttpServer::answer(mg_connection* connection, void* server) {
    const mg_request_info& request = *mg_get_request_info(connection);
    const std::string_view method = request.request_method;
    HttpAnswer answer;
    if (method != "GET" && method != "HEAD") {
        answer = {.status = 405, .body = "only GET and HEAD\n"};
    } else {
        try {
            answer = static_cast<HttpServer*>(server)->handler_(
                request.local_uri_raw != nullptr ? request.local_uri_raw : "");
        } catch (const std::exception& error) {
            answer = {.status = 500, .body = std::string(error.what()) + '\n'};
        }
    }
    send(connection, answer, method != "HEAD");
    return answer.status;
}

int HttpServer::fail(mg_connection* connection, int status, const char* /*message*/) {
    send(connection, {.status = status, .body = std::string(wordsFor(status)) + '\n'}, true);
    return 0;
}

int HttpServer::log(const mg_connection* /*connection*/, const char* /*message*/) {
    return 1;  // clients that go wrong are their own business
}

void HttpServer::send(mg_connection* connection, const HttpAnswer& answer, bool with_body) {
    const std::string head = fmt::format(
        "HTTP/1.1 {} {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nCache-Control: no-store\r\n{}{}"
        "Connection: close\r\n\r\n",
        answer.status, wordsFor(answer.status), answer.type, answer.body.size(), kSafety,
        answer.status == 405 ? "Allow: GET, HEAD\r\n" : "");
    mg_write(connection, head.data(), head.size());
    if (with_body) {
        mg_write(connection, answer.body.data(), answer.body.size());
    }
}

}  // namespace zel_monitor
