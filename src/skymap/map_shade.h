// The day and night layer of a body: for each pixel, how high the body
// stands there, as a grey from black (below the horizon) to white (higher
// than about 1/gain radians), on the map's plain geometry (the map offset is
// applied when the layer is painted). The layer is an 8-bit grey image: a
// quarter of the memory to write, and as quick to paint over the map.
#pragma once

class QImage;

// The map is at most this wide; the column tables hold this many entries.
constexpr int map_shade_max_width = 1600;

// Paint the layer over the whole of `layer` for a body whose sub-point is at
// latitude, longitude (degrees), with the edge gain (10 for the Sun, 8 for
// the Moon): a grey per pixel, written row by row into the image's own
// memory, which is kept from one layer to the next.
void map_shade(QImage *layer, double latitude, double longitude, double gain);

// The same layer drawn point by point through a painter, the pen changed only
// when the grey changes. Kept as the measure of the fast way: the two must
// give the same pixels, and the benchmark runs both.
void map_shade_by_points(QImage *layer, double latitude, double longitude, double gain);
