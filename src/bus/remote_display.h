// The remote display and switches that the devices at AZ_Addr and EL_Addr
// can carry: the display is kept up to date line by line, and a held switch
// works the panel's arrow as press-to-move.
#pragma once

#include <cstdint>

enum
{
    DISPLAY_FULL_REWRITE = 1000 // calls between two writes of the whole screen
};

extern int32_t display_pass_count;
// The direction a held switch has its axis moving; DIR_STOPPED when none.
extern int32_t remote_az_direction, remote_el_direction;

void remote_display_reset(void);
// One call of the display group, every 150 ms: the changed lines, and the
// whole screen every DISPLAY_FULL_REWRITE calls.
void remote_display_update(void);
// One look at the switches, every 150 ms while they are switched on.
void remote_switch_group(void);
