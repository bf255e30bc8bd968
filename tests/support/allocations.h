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

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_ALLOCATIONS_H_
