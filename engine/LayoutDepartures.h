#ifndef ENGINE_LAYOUTDEPARTURES_H
#define ENGINE_LAYOUTDEPARTURES_H

#include "engine/DescriptorSource.h"
#include "engine/Examination.h"

// Compares a recording that is marked as sealed with what sealing writes: fills in the departures.
// Where the audio isn't found in its place, only the first one is told: the rest is just moved.
void FindDepartures(DescriptorSource& source, RecordingExamination& found);

#endif
