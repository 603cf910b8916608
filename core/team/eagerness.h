// Sharing of small problems, for tests and for `orv verify`.
//
// What is cut in parts is cut in the same places whether it be large or not, but only the large is worth waking threads
// for: corners of cuts would be met at sizes that are slow to check. So work can be taken as larger than it is. This is
// exported, but no part of the public interface and no setting: it makes programs slower and tells nothing about them.
#pragma once

// For the whole process; 1 is how things are.
extern "C" __attribute__((visibility("default"))) void orv_team_set_eagerness(double times);
