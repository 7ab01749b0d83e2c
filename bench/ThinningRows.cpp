#include "Harness.h"

namespace tracery::bench {

Rows thinningRows() { return {}; }

} // namespace tracery::bench
