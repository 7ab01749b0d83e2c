#pragma once

/// The libraries' names, beside the program's own.
namespace tracery::basics {}
namespace tracery::recordings {}
namespace tracery::figures {}
namespace tracery::measures {}

namespace scope {
using namespace tracery::basics;
using namespace tracery::recordings;
using namespace tracery::figures;
using namespace tracery::measures;
} // namespace scope
