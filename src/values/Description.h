#pragma once

#include <cstdint>
#include <string>

namespace mrziphoto {

class Array;
class Dictionary;
class Value;

/// The descriptions of containers, in the platform's customary form: an element a line, four blanks
/// more for each container around it. Inside them, words of ASCII letters and digits and bytes
/// stand as they are, everything else in quotes, with characters outside ASCII as "\Uxxxx". The
/// entries of a dictionary are sorted by key. Where the text grows beyond `Limits::description` it
/// is cut, which "..." shows.
[[nodiscard]] std::string describe(const Array& array);
[[nodiscard]] std::string describe(const Dictionary& dictionary);

/// What a message says of a value that it complains about: its description where that is short,
/// else only the class name in angle brackets.
[[nodiscard]] std::string describeBriefly(const Value& value);

/// The bytes that a description may still grow by, `Limits::description` at first. Parts that an
/// archive shares between many places, or quotes inside quotes, could else make the text of a small
/// file fill the memory. What is described on the same thread while a budget lives, as part of a
/// larger description, draws on that budget and not on one of its own.
class DescriptionBudget {
 public:
  DescriptionBudget();
  ~DescriptionBudget();
  DescriptionBudget(const DescriptionBudget&) = delete;
  DescriptionBudget& operator=(const DescriptionBudget&) = delete;

  [[nodiscard]] std::uint64_t left() const { return _account._left; }
  void spend(std::uint64_t bytes) { _account._left -= bytes < left() ? bytes : left(); }

 private:
  DescriptionBudget& _account;  // the outermost one of the thread, which may be this one
  std::uint64_t _left;
};

/// Stands where a description was cut.
inline constexpr char kDescriptionCut[] = "...";

}  // namespace mrziphoto
