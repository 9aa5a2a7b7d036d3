// SPDX-License-Identifier: Apache-2.0
// orvo-mapcheck for a device and for the build of one.

#include "mapcheck/MapCheck.h"

int main(int argc, char** argv) {
    return orvo::mapcheck::checkMaps(argc, argv, nullptr);
}
