// Checks of option values. Each accepts a value or says what is wrong with it; CLI11 puts the option's name
// in front.
#pragma once

#include <CLI/CLI.hpp>
#include <limits>
#include <string>
#include <vector>

namespace sonivex_tool {

/** Accepts a finite number from `lowest` to `highest`. */
CLI::Validator finiteFrom(double lowest, double highest = std::numeric_limits<double>::max());

/** Accepts one of `names`; for any other word it offers the nearest one. */
CLI::Validator oneOf(const std::vector<std::string>& names);

/** Accepts a bit rate as in "192k", "1.5M" and "256000", from 500 bit/s to 100 Mbit/s, and replaces it by the
 *  number of bits in a second. */
CLI::Validator bitRate();

/** Accepts the name of a channel layout, such as "5.1(side)". */
CLI::Validator channelLayout();

/** Accepts the number of an audio stream, from 0 to 9999, or a language of two or more letters. */
CLI::Validator streamChoice();

/** Accepts everything but the empty text. @param what names the value, as in "must name <what>" */
CLI::Validator notEmpty(const std::string& what);

}  // namespace sonivex_tool
