// Quiet motion for the digital modes: JT65, Q65 and their kin receive for
// most of each minute, and a motor start or a relay click in that time puts
// noise into the receiver. In AUTO the motors then start only in a window
// from a set second to the end of the minute, and a move still running when
// the minute turns stops there: the dish steps once a minute between periods.
#pragma once

// The error an axis in AUTO steps on: the true error inside the window, 0
// outside it, which holds a motor at rest and stops a running one. second is
// the second of the minute (0..59); a window start outside 0..59 is taken as
// the nearer end, so 0 or less allows the whole minute.
double quiet_motion_error(double error, int second, int window_start);
