// SPDX-License-Identifier: Apache-2.0
// The tags of the lines that the floor logs.
#pragma once

namespace orvo::benchmarks {

inline constexpr char kTag[] = "OrvoCameraServiceImpl";
inline constexpr char kMapTag[] = "ProviderMapper";

}  // namespace orvo::benchmarks
