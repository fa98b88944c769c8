// What a source of `recording` sees: its own headers, and none of a layer above it.
#include "recording/WaveHeader.h"

#include "export/Export.h"
