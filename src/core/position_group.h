// The position group of the cycle, every 100 ms: read the antenna, test the
// limits, show the position with its limit mark. The drive step that follows
// takes the limit results.
#pragma once

struct PositionLimits
{
    int through_north; // the azimuth limits run through north (Min > Max)
    int az_limit_hit;
    int el_limit_hit;
};

// An antenna exactly on a limit counts as outside it.
int position_az_limit_hit(double position, double minimum, double maximum);
int position_el_limit_hit(double position, double minimum, double maximum);

// Read and show; slider is the dial page slider's position (the position
// dials are repainted only while they are on show).
PositionLimits position_group(int slider);

// The analogue input group, every 150 ms.
void adc_group(void);
