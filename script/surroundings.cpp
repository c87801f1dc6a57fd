#include "script/surroundings.h"

#include "sim/world.h"

namespace script {

void Surroundings::LetTimePass(std::uint32_t ms) { sim::TheWorld().kernel.Pump(ms); }

}  // namespace script
