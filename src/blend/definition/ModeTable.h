#pragma once

#include <vantu/BlendMode.h>

#include <array>
#include <cstddef>
#include <utility>

namespace vantu {

/// A table with one entry per blend mode: entry i is `make.template operator()<mode i>()`.
template <typename Make>
constexpr auto MakeModeTable(Make make) {
    return [&]<std::size_t... I>(std::index_sequence<I...>) {
        return std::array{make.template operator()<static_cast<BlendMode>(I)>()...};
    }
    (std::make_index_sequence<kBlendModeCount>());
}

}  // namespace vantu
