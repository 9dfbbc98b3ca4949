// What the readers of the tables count on.
#pragma once

#include <vector>

#include "finish.h"
#include "tables.h"

namespace sonivex_irgen {

/** Throws UnmetTableFact with the table and the reason unless every set has its tables in order, by name and
 * length; its largest magnitude; its sources on their sides (the ear with the larger peak; in the middle
 * where the two peaks are within 30 %); equal ears in the centre of the modes; and no two other tables alike.
 */
void checkTableFacts(const std::vector<TableSet>& sets);

}  // namespace sonivex_irgen
