// SPDX-License-Identifier: Apache-2.0
// Builds the process-wide camera id tables.

#include "provider/naming/DeviceMap.h"

namespace android::hardware::camera::provider::V2_4::implementation {

// The lists are data, not a numbering: their repeated and out-of-sequence ids are meant to be so.
// Before gDeviceMap in the same file, so that it is built first and destroyed last. Static, so that
// no build of it gives another module this name, whatever is exported.
static DeviceMap gDefaultDeviceMap = {
        {"legacy/0", {"0", "1", "10", "51", "12", "5", "6", "7", "8", "9", "10", "11"}},
        {"external/0", {"0", "91", "2", "3", "4", "32"}},
        {"default/0", {"93", "94", "2", "3", "4", "23", "24", "25", "26", "27", "28", "29"}},
        {"virtual/0", {"60", "61", "62", "63", "64", "65", "6",  "7",  "68", "69",
                       "70", "71", "72", "73", "74", "75", "76", "77", "78", "79"}},
};

DeviceMap gDeviceMap;

bool gParseFlag = false;

}  // namespace android::hardware::camera::provider::V2_4::implementation
