// How the time of some work grows with its size.
#ifndef BENCH_GROWTH_H_
#define BENCH_GROWTH_H_

#include <malloc.h>
#include <time.h>

#include <cmath>
#include <vector>

namespace bench {

/// Processor time of this thread in seconds.
inline double CpuSeconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Lets memory of one repetition serve the next, so that how fast the kernel gives it is not
/// measured.
inline void KeepFreedMemory() {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

struct Measured {
  int size;
  double seconds;
};

/// The time grows with the size to the power of this: slope of the line through (log size, log
/// seconds) with the least squares.
inline double Exponent(const std::vector<Measured>& points) {
  double x_mean = 0;
  double y_mean = 0;
  for (const Measured& point : points) {
    x_mean += std::log(point.size) / static_cast<double>(points.size());
    y_mean += std::log(point.seconds) / static_cast<double>(points.size());
  }
  double covariance = 0;
  double variance = 0;
  for (const Measured& point : points) {
    const double x = std::log(point.size) - x_mean;
    covariance += x * (std::log(point.seconds) - y_mean);
    variance += x * x;
  }
  return covariance / variance;
}

}  // namespace bench

#endif  // BENCH_GROWTH_H_
