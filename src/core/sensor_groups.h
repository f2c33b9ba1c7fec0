// The cycle's groups of the bus's sensors and remote panel: the weather
// station's six steps, the remote switches and the remote display, wired
// into one tick's actions.
#pragma once

struct CycleActions;

// slider is the dial page slider's position in this tick: a weather dial is
// repainted only while its page shows.
void sensor_groups_wire(CycleActions *actions, int slider);
