#include "astro/path.h"

#include <cmath>
#include <gtest/gtest.h>

TEST(PathLoss, ZeroAtPerigeeAndFallsWithTheFourthPowerOfRange)
{
    EXPECT_NEAR(path_loss_db(356903.0 / 1.5e8), 0.0, 1e-12);
    EXPECT_NEAR(path_loss_db(2.0 * 356903.0 / 1.5e8), -40.0 * log10(2.0), 1e-12);
    EXPECT_LT(path_loss_db(406000.0 / 1.5e8), -2.2); // apogee: about 2.24 dB down
    EXPECT_GT(path_loss_db(406000.0 / 1.5e8), -2.3);
}

// 13 K at 408 MHz is the coldest sky: against it there is nothing more to lose.
// At 144 MHz with 231 K behind the Moon: -10 log10(311 / (13 (408/144)^2.6 + 80)),
// worked by hand, is -0.535108785518832 dB.
TEST(PathDegradation, LossAgainstTheColdestSky)
{
    EXPECT_NEAR(path_degradation_db(-1.5, 13.0, 408.0), -1.5, 1e-12);
    EXPECT_NEAR(path_degradation_db(0.0, 231.0, 144.0), -0.535108785518832, 1e-12);
    EXPECT_LT(path_degradation_db(0.0, 300.0, 1296.0), 0.0);
}
