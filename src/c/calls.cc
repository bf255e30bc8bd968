#include "c/calls.h"

#include <array>
#include <exception>
#include <new>
#include <system_error>

namespace ZELC {
namespace {

/// Without memory of its own, so that its lack can be told.
thread_local std::array<char, 256> last_error{};

}  // namespace

int failed(int code, const char* text) noexcept {
    const size_t length = std::min(std::strlen(text), last_error.size() - 1);
    std::memcpy(last_error.data(), text, length);
    last_error[length] = '\0';
    return code;
}

int failedByException() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return failed(ZELC_NO_MEMORY, "no memory");
    } catch (const std::system_error& error) {
        return failed(ZELC_NO_THREAD, error.what());
    } catch (const std::exception& error) {
        return failed(ZELC_INTERNAL, error.what());
    } catch (...) {
        return failed(ZELC_INTERNAL, "an unknown exception");
    }
}

}  // namespace ZELC

const char* zelc_last_error(void) {
    return ZELC::last_error.data();
}

uint32_t zelc_version(void) {
    return ZELC_VERSION;
}
