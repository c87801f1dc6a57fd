// Script lines that check registers.
#pragma once

#include "script/line.h"

namespace script {

Step ParseRegister(Arguments& arguments);
Step ParseRegisters(Arguments& arguments);
Step ParseField(Arguments& arguments);

}  // namespace script
