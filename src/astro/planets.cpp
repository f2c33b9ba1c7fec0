#include "astro/planets.h"

#include <libnova/jupiter.h>
#include <libnova/mars.h>
#include <libnova/mercury.h>
#include <libnova/neptune.h>
#include <libnova/pluto.h>
#include <libnova/saturn.h>
#include <libnova/uranus.h>
#include <libnova/venus.h>

enum
{
    PLANET_FIRST_ROW = 4,
    PLANET_COUNT = 8
};

// In source table order, rows 4 to 11.
static const PlanetFunctions planet_table[PLANET_COUNT] = {
    {ln_get_mercury_equ_coords, ln_get_mercury_earth_dist, ln_get_mercury_disk, ln_get_mercury_rst},
    {ln_get_venus_equ_coords, ln_get_venus_earth_dist, ln_get_venus_disk, ln_get_venus_rst},
    {ln_get_mars_equ_coords, ln_get_mars_earth_dist, ln_get_mars_disk, ln_get_mars_rst},
    {ln_get_jupiter_equ_coords, ln_get_jupiter_earth_dist, ln_get_jupiter_disk, ln_get_jupiter_rst},
    {ln_get_saturn_equ_coords, ln_get_saturn_earth_dist, ln_get_saturn_disk, ln_get_saturn_rst},
    {ln_get_uranus_equ_coords, ln_get_uranus_earth_dist, ln_get_uranus_disk, ln_get_uranus_rst},
    {ln_get_neptune_equ_coords, ln_get_neptune_earth_dist, ln_get_neptune_disk, ln_get_neptune_rst},
    {ln_get_pluto_equ_coords, ln_get_pluto_earth_dist, ln_get_pluto_disk, ln_get_pluto_rst},
};

const PlanetFunctions *planet_functions(int index)
{
    int i = index - PLANET_FIRST_ROW;
    return i >= 0 && i < PLANET_COUNT ? &planet_table[i] : nullptr;
}
