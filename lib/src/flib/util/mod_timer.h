// A wall-clock timer within the hour.
#pragma once

namespace flib {

/// The time of the last start, in seconds since the current hour of the local clock began. Hours
/// are not counted, so a time taken across the full hour comes out too small by 3600.
struct timer {
    float saved_time = 0;

    void start_timer();
    float elapsed_time() const;
};

/// Records the current time in `self`.
void start_timer_sub(timer& self);

/// Seconds since the start of `self`, within the hour.
float elapsed_time_fn(const timer& self);

/// Minute, second and millisecond of a clock as seconds within the hour, in single precision.
float seconds_within_hour(int minute, int second, int millisecond);

}  // namespace flib
