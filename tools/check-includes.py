#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Finds headers of the C++ library of which a file uses nothing.

usage: check-includes.py FILE...

Prints one line for each such include; ends with 1 if there is one. It looks for names, not for what
they mean, so that it complains too rarely rather than wrongly.
"""

import re
import sys
from pathlib import Path

# What a header is included for, as a pattern; one that is not here is included for its own name.
USES = {
    "algorithm": r"std::(a(ll_of|ny_of|djacent_find)|binary_search|clamp|copy\w*|count\w*|equal\w*|fill\w*"
                 r"|find\w*|for_each|generate\w*|includes|is_\w+|lexi\w+|lower_bound|m(ax|in)\w*|mismatch"
                 r"|move|next_permutation|none_of|nth_element|partition\w*|re(move|place|verse)\w*|rotate"
                 r"|sample|search\w*|set_\w+|shuffle|sort|stable_\w+|swap_ranges|transform|uni\w+|upper_bound)\b",
    "chrono": r"\bchrono\b|\d(ms|us|ns|s|min)\b",
    "filesystem": r"\bfs::|filesystem",
    "fstream": r"fstream",
    "functional": r"\bstd::(function|hash|less|greater|equal_to|c?ref|bind|invoke|plus|not_fn|mem_fn)\b",
    "future": r"\b(future|promise|async|shared_future|packaged_task|launch)\b",
    "iostream": r"\b(cout|cerr|cin|clog)\b",
    "iterator": r"(inserter|_iterator|std::(size|data|begin|end|next|prev|advance|distance))\b",
    "limits": r"\bnumeric_limits\b",
    "map": r"\b(multi)?map\b",
    "memory": r"\b(\w+_ptr|make_(shared|unique)|addressof|allocator\w*|enable_shared_from_this|default_delete)\b",
    "mutex": r"\b(\w*mutex|\w+_lock|lock_guard|call_once|once_flag)\b",
    "new": r"\b(bad_alloc|nothrow|align_val_t|operator new|operator delete|launder)\b|\bnew \(",
    "numeric": r"std::(accumulate|iota|reduce|inner_product|partial_sum|gcd|lcm|adjacent_difference)\b",
    "optional": r"\b(optional|nullopt)\b",
    "ostream": r"\b(ostream|endl|flush)\b",
    "random": r"\b(mt19937\w*|\w+_distribution|random_device|minstd_rand0?|seed_seq)\b",
    "set": r"\b(multi)?set\b",
    "sstream": r"\w*stringstream",
    "string": r"\b(string|to_string|sto[a-z]+|getline)\b",
    "system_error": r"\b(error_code|errc|system_error|\w+_category)\b",
    "thread": r"\b(this_)?thread\b",
    "tuple": r"\b(tuple|tie|apply|make_tuple|std::get|forward_as_tuple)\b",
    "type_traits": r"\b(is|enable|remove|add|decay|conditional|underlying|void|has|invoke)_\w+|\w+_t\b",
    "utility": r"std::(move|forward|pair|make_pair|swap|exchange|declval|as_const|get|\w+_sequence|in_place)\b"
               r"|piecewise_construct",
    "variant": r"\b(variant|visit|monostate|holds_alternative|get_if)\b",
}
WITHOUT_CHECK = re.compile(r"c[a-z]+$")  # Names of C, in no name space of their own.
INCLUDE = re.compile(r"^#include <([a-z_]+)>\n", re.MULTILINE)
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)


def unused(path):
    text = Path(path).read_text(encoding="utf-8")
    code = COMMENT.sub("", INCLUDE.sub("", text))
    for header in INCLUDE.findall(text):
        if header not in USES and WITHOUT_CHECK.match(header):
            continue
        if not re.search(USES.get(header, rf"\b{header}\b"), code):
            yield header


def main(paths):
    found = [f"{path}: nothing of <{header}> is used" for path in paths for header in unused(path)]
    print("".join(line + "\n" for line in found), end="", file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
