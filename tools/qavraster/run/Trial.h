#pragma once

#include "operations/Catalogue.h"

namespace qavraster {

/// The pixel formats in which the operation would take a picture, as the end of a message: "; L8 or LA88 would do, as
/// after --convert L8". Empty when there is none.
std::string formatsThatWouldDo(const Operation& operation, const Values& values, const Context& context);

}  // namespace qavraster
