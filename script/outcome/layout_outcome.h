// What became of layouts and channel masks: boards of every size take every mode, and do not fill
// it.
#pragma once

#include "script/outcome/text_action.h"

namespace script {

void SayOfLiveSplit(TextAction& action);
void SayOfPlaySplit(TextAction& action);
// Of the masks of any command.
void SayOfMasks(TextAction& action);

}  // namespace script
