#pragma once

namespace vantu {

/// The separable blend modes of the PDF imaging model (ISO 32000-2, 11.3.5.2). The values are fixed.
///
/// ColorDodge and ColorBurn are those of ISO 32000-1: white dodges black to white, and black burns white to black,
/// where ISO 32000-2 leaves the backdrop.
enum class BlendMode : unsigned int {
    Normal = 0,       ///< the source
    Multiply = 1,     ///< product
    Screen = 2,       ///< complement of the product of the complements
    Overlay = 3,      ///< Multiply or Screen, steered by the backdrop
    Darken = 4,       ///< the smaller
    Lighten = 5,      ///< the larger
    ColorDodge = 6,   ///< backdrop over complement of source
    ColorBurn = 7,    ///< complement of (complemented backdrop over source)
    HardLight = 8,    ///< Multiply or Screen, steered by the source
    SoftLight = 9,    ///< a soft curve, steered by the source
    Difference = 10,  ///< absolute difference
    Exclusion = 11,   ///< sum less twice the product
};

/// The modes' names in PDF files, by their values.
inline constexpr const char* kBlendModeNames[] = {"Normal",    "Multiply",  "Screen",     "Overlay",
                                                  "Darken",    "Lighten",   "ColorDodge", "ColorBurn",
                                                  "HardLight", "SoftLight", "Difference", "Exclusion"};

/// Number of blend modes; their values are 0 to this less one.
inline constexpr unsigned int kBlendModeCount = sizeof kBlendModeNames / sizeof *kBlendModeNames;
static_assert(static_cast<unsigned int>(BlendMode::Exclusion) + 1 == kBlendModeCount);

}  // namespace vantu
