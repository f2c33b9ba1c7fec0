// The eight planets of the source table, as libnova's functions for each: one
// row of pointers per planet instead of eight copies of the same branch.
#pragma once

#include <libnova/ln_types.h>

struct PlanetFunctions
{
    void (*equ_coords)(double JD, struct ln_equ_posn *position);
    double (*earth_dist)(double JD);
    double (*disk)(double JD);
    int (*rst)(double JD, struct ln_lnlat_posn *observer, struct ln_rst_time *rst);
};

// The functions of source row index (4 Mercury .. 11 Pluto), or null.
const PlanetFunctions *planet_functions(int index);
