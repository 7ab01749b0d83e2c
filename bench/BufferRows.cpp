#include "Harness.h"

namespace tracery::bench {

Rows bufferRows() { return {}; }

} // namespace tracery::bench
