// A trigger controller beside the naive one.

#include "Bytes.h"
#include "Floor.h"
#include "trigger/ControllerModel.h"

void tracery::fuzz::runInput(Bytes& bytes)
{
    static Floor windowsOrFates[] = {
        {"windows in Auto", 1000}, {"in Normal", 1000},  {"in Once", 1000},     {"in Off", 0},
        {"events shown", 1000},    {"superseded", 1000}, {"overlapping", 1000}, {"disarmed", 1000}};
    naive::Seen seen{};
    for (naive::RandomController run(bytes, bytes.byte(), seen); !bytes.isEmpty();)
        run.step();
    EXPECT_EQ(seen[static_cast<std::size_t>(naive::ModeEnum::Off)], 0U);
    for (std::size_t i = 0; i < seen.size(); ++i)
        windowsOrFates[i] += seen[i];
}
