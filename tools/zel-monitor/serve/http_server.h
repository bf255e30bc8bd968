#ifndef ZEL_TOOLS_SERVE_HTTP_SERVER_H_
#define ZEL_TOOLS_SERVE_HTTP_SERVER_H_

#include <functional>
#include <memory>
#include <string>

struct mg_connection;
struct mg_context;

namespace zel_monitor {

struct HttpAnswer {
    int status = 200;
    std::string type = "text/plain; charset=utf-8";
    std::string body = {};
};

/// A small HTTP server on threads of its own, for GET and HEAD alone. Clients that are slow, or many, wait
/// for each other and for nobody else.
class HttpServer {
  public:
    /// Answers a path, decoded, without its query. Any thread, several at a time.
    using Handler = std::function<HttpAnswer(const std::string& path)>;

    /// `address` is as isHttpAddress() takes it. Throws std::runtime_error if it cannot be listened on.
    HttpServer(const std::string& address, Handler handler);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    /// On which it listens.
    int port() const;

  private:
    static int answer(mg_connection* connection, void* server);
    static int fail(mg_connection* connection, int status, const char* message);
    static int log(const mg_connection* connection, const char* message);
    static void send(mg_connection* connection, const HttpAnswer& answer, bool with_body);

    const std::string address_;
    Handler handler_;
    mg_context* context_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_HTTP_SERVER_H_
