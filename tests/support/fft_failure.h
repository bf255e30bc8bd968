#ifndef ZEL_TESTS_SUPPORT_FFT_FAILURE_H_
#define ZEL_TESTS_SUPPORT_FFT_FAILURE_H_

namespace support {

/// While it lives, no Fourier transform can be made. One at a time. Link fft_failure.cc.
class NoTransform {
  public:
    NoTransform();
    ~NoTransform();
    NoTransform(const NoTransform&) = delete;
    NoTransform& operator=(const NoTransform&) = delete;
};

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_FFT_FAILURE_H_
