// Script lines that check registers.
#pragma once

#include "script/line.h"

namespace script {

Step ParseRegister(Arguments& arguments);
Step ParseRegisters(Arguments& arguments);

}  // namespace script
