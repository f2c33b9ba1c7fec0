#include "core/quiet_motion.h"

double quiet_motion_error(double error, int second, int window_start)
{
    int start = window_start < 0 ? 0 : window_start > 59 ? 59 : window_start;
    return second >= start ? error : 0.0;
}
