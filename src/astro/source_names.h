// The names of the 27 sources, in table order, as the panel and the sources
// table show them.
#pragma once

const char *source_name(int index); // "" outside 0..26
