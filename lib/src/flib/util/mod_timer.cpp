#include "flib/util/mod_timer.h"

#include <ctime>

namespace flib {
namespace {

float current_time() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    return seconds_within_hour(local.tm_min, local.tm_sec, static_cast<int>(now.tv_nsec / 1000000));
}

}  // namespace

float seconds_within_hour(int minute, int second, int millisecond) {
    return static_cast<float>(minute) * 60.0F + static_cast<float>(second) +
           static_cast<float>(millisecond) * 0.001F;
}

void start_timer_sub(timer& self) {
    self.saved_time = current_time();
}

float elapsed_time_fn(const timer& self) {
    return current_time() - self.saved_time;
}

void timer::start_timer() {
    start_timer_sub(*this);
}

float timer::elapsed_time() const {
    return elapsed_time_fn(*this);
}

}  // namespace flib
