#pragma once

namespace sonivex_plotting {

/** A colour; every part is 0 to 1. */
struct Colour {
    double red, green, blue;
};

inline constexpr Colour kWhite{1.0, 1.0, 1.0};
inline constexpr Colour kInk{0.13, 0.13, 0.15};
inline constexpr Colour kGrid{0.87, 0.87, 0.89};
inline constexpr Colour kFrame{0.60, 0.60, 0.64};
inline constexpr Colour kGrey{0.70, 0.70, 0.72};

// Palette that colour-blind readers can tell apart (Okabe & Ito 2008).
inline constexpr Colour kBlue{0.00, 0.45, 0.70};
inline constexpr Colour kSkyBlue{0.34, 0.71, 0.91};
inline constexpr Colour kGreen{0.00, 0.62, 0.45};
inline constexpr Colour kOrange{0.90, 0.62, 0.00};
inline constexpr Colour kVermillion{0.84, 0.37, 0.00};
inline constexpr Colour kPurple{0.80, 0.47, 0.65};
inline constexpr Colour kYellow{0.94, 0.89, 0.26};

}  // namespace sonivex_plotting
