#pragma once

#include <validation/TemplateReading.h>

namespace zelt {

using Definition = orvcapsule::DefinitionReading;
using orvcapsule::ReadDefinition;

} // namespace zelt
