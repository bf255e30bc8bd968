#include "base/started_thread.h"

#include <future>
#include <utility>

#include "base/thread_name.h"

namespace ZEL {

std::thread startThread(const std::function<std::string()>& name_of, std::function<void()> body) {
    std::promise<void> named;
    const std::future<void> running = named.get_future();
    // `name_of` is used before `named` is set, that is while this function still waits.
    std::thread thread([&name_of, named = std::move(named), body = std::move(body)]() mutable {
        setThreadName(name_of());
        named.set_value();
        body();
    });
    running.wait();
    return thread;
}

}  // namespace ZEL
