#ifndef ZEL_TESTS_SUPPORT_ALLOCATIONS_H_
#define ZEL_TESTS_SUPPORT_ALLOCATIONS_H_

#include <cstddef>

namespace support {

/// How many times this thread has asked operator new for memory. Link allocations.cc.
size_t allocationCount();

/// How many pieces of memory this thread has got from operator new and not given back.
size_t allocationsAlive();

/// While it lives, one request of this thread to operator new fails: the first for `nth` 0, and so on.
class FailingNew {
  public:
    explicit FailingNew(size_t nth);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    /// True once the request has been made and refused.
    bool happened() const;
};

/// While it lives, every request of every thread but its maker's fails. One at a time.
class NoMemoryElsewhere {
  public:
    NoMemoryElsewhere();
    ~NoMemoryElsewhere();
    NoMemoryElsewhere(const NoMemoryElsewhere&) = delete;
    NoMemoryElsewhere& operator=(const NoMemoryElsewhere&) = delete;
};

/// Calls `use` with its first request for memory failing, then its second, and so on until none fails; what
/// it throws is the caller's to catch.
template <typename Use>
void withEachAllocationFailing(Use use) {
    for (size_t nth = 0;; ++nth) {
        const FailingNew fail(nth);
        use();
        if (!fail.happened()) {
            return;
        }
    }
}

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_ALLOCATIONS_H_
