// What leaves a library: functions under C names.
#pragma once

#define ORV_EXPORT extern "C" __attribute__((visibility("default")))
