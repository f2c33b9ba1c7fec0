// The EME path figures that follow from the Moon's distance and the sky
// behind it: path loss against perigee and the degradation of an echo.
#pragma once

// dB against the perigee distance of 356903 km: 0 there, negative beyond.
// distance is the record's figure, kilometres divided by 1.5e8.
double path_loss_db(double distance);

// dB: the path loss plus the loss against the coldest sky, for a receiver of
// 80 K. sky_temp in kelvin, frequency in MHz.
double path_degradation_db(double path_loss, double sky_temp, double frequency_mhz);
