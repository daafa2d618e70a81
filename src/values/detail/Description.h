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

/// A value in an error message: its description where that is short, else its class name in angle
/// brackets.
[[nodiscard]] std::string describeBriefly(const Value& value);

/// The bytes that a description may still grow by, `Limits::description` at first: shared parts of
/// an archive, or quotes inside quotes, could make the text of a small file fill the memory.
/// Budgets inside another one of the same thread draw on that.
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
