#include "support/allocations.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr size_t kNever = std::numeric_limits<size_t>::max();

thread_local size_t requests = 0;
thread_local size_t alive = 0;
thread_local size_t failing_request = kNever;
std::atomic<const size_t*> only_with_memory{nullptr};  // the thread whose count of requests this is

void* request(size_t size) noexcept {
    const size_t number = requests++;
    const size_t* const only = only_with_memory.load();
    const bool refused = number == failing_request || (only != nullptr && only != &requests);
    void* const memory = refused ? nullptr : std::malloc(size == 0 ? 1 : size);
    alive += memory != nullptr ? 1 : 0;
    return memory;
}

void* requestOrThrow(size_t size) {
    void* const memory = request(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void giveBack(void* memory) noexcept {
    alive -= memory != nullptr ? 1 : 0;
    std::free(memory);
}

}  // namespace

void* operator new(size_t size) {
    return requestOrThrow(size);
}
void* operator new[](size_t size) {
    return requestOrThrow(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return request(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return request(size);
}
void operator delete(void* memory) noexcept {
    giveBack(memory);
}
void operator delete[](void* memory) noexcept {
    giveBack(memory);
}
void operator delete(void* memory, size_t) noexcept {
    giveBack(memory);
}
void operator delete[](void* memory, size_t) noexcept {
    giveBack(memory);
}

namespace support {

size_t allocationCount() {
    return requests;
}
size_t allocationsAlive() {
    return alive;
}

FailingNew::FailingNew(size_t nth) {
    failing_request = requests + nth;
}
FailingNew::~FailingNew() {
    failing_request = kNever;
}
bool FailingNew::happened() const {
    return requests > failing_request;
}

NoMemoryElsewhere::NoMemoryElsewhere() {
    only_with_memory = &requests;
}
NoMemoryElsewhere::~NoMemoryElsewhere() {
    only_with_memory = nullptr;
}

}  // namespace support
