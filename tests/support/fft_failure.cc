#include "support/fft_failure.h"

#include <atomic>
#include <dlfcn.h>

#include <kiss_fftr.h>

namespace {

std::atomic<bool> none{false};

}  // namespace

// Stands before the function of the same name in the shared library.
extern "C" kiss_fftr_cfg kiss_fftr_alloc(int size, int inverse, void* memory, size_t* bytes) {
    using Alloc = kiss_fftr_cfg (*)(int, int, void*, size_t*);
    static const auto alloc = reinterpret_cast<Alloc>(dlsym(RTLD_NEXT, "kiss_fftr_alloc"));
    return none ? nullptr : alloc(size, inverse, memory, bytes);
}

namespace support {

NoTransform::NoTransform() {
    none = true;
}
NoTransform::~NoTransform() {
    none = false;
}

}  // namespace support
