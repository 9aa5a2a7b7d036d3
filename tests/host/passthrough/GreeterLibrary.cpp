// SPDX-License-Identifier: Apache-2.0
// Implementations in libraries, for tests of the search: one good, one that has nothing for
// anybody, one without the function that is looked for.

#include <string>

#include "tests/host/servicemanager/Greeter.h"

using orvo::testing::CountingGreeter;
using IGreeter = orvo::test::greeter::V1_0::IGreeter;

#if defined(GREETER_LIBRARY_IS_good)

// A later version than the one that is asked for, as a library may give. Nothing for "nobody".
extern "C" IGreeter* HIDL_FETCH_IGreeter(const char* instance) {
    if (std::string(instance) == "nobody") return nullptr;
    return new CountingGreeter(std::string("library's ") + instance);
}

#elif defined(GREETER_LIBRARY_IS_null)

extern "C" IGreeter* HIDL_FETCH_IGreeter(const char*) {
    return nullptr;
}

#elif defined(GREETER_LIBRARY_IS_nosymbol)

extern "C" IGreeter* HIDL_FETCH_IGreeters(const char* instance) {
    return new CountingGreeter(instance);
}

#endif
