// A trigger controller beside the naive one.

#include "Bytes.h"
#include "trigger/ControllerModel.h"

void tracery::fuzz::runInput(Bytes& bytes)
{
    naive::Seen seen{};
    for (naive::RandomController run(bytes, bytes.byte(), seen); !bytes.isEmpty();)
        run.step();
}
