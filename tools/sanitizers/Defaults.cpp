// SPDX-License-Identifier: Apache-2.0
// How the sanitizers' runtimes behave, for every program of a build with ORVO_SANITIZER. It is part
// of the programs and not of the environment, so that it reaches each process of a test, however
// that is started. What the environment says (ASAN_OPTIONS and so on) comes on top.

extern "C" {

/** A failed allocation shall be one, as without the sanitizer: the code has an answer to it. */
const char* __asan_default_options() {
    return "allocator_may_return_null=1:detect_stack_use_after_return=1:strict_init_order=1";
}

const char* __ubsan_default_options() {
    return "print_stacktrace=1";
}

/**
 * Debian's libraries are not instrumented: what they do inside is not looked at. A report ends the
 * process at once, or else a test might pass in spite of it.
 */
const char* __tsan_default_options() {
    return "ignore_noninstrumented_modules=1:halt_on_error=1:second_deadlock_stack=1:"
           "suppressions=" ORVO_TSAN_SUPPRESSIONS;
}
}
