#include "Harness.h"

namespace tracery::bench {

Rows spectrumRows() { return {}; }

} // namespace tracery::bench
