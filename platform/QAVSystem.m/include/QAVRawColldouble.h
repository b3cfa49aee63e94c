#pragma once

#include <QAVExport.h>

#include <vector>

/// Growing collection of doubles whose positions count from 1.
class QAV_EXPORT QAVRawColldouble {
 public:
  QAVRawColldouble() = default;
  /// Makes room for `capacity` values; the collection is empty all the same.
  explicit QAVRawColldouble(int capacity);

  /// How many values it holds.
  int Size() const noexcept { return static_cast<int>(values_.size()); }
  /// Adds `value` behind the last one.
  void Append(double value) { values_.push_back(value); }
  /// Empties the collection and keeps its memory for the values to come.
  void RemoveAll() noexcept { values_.clear(); }

  /// Value at `position`, 1..Size(). Any other position is reported as a failed check and gives a scratch
  /// value that belongs to no collection.
  double& operator[](int position) { return IsValid(position) ? values_[Index(position)] : Scratch(); }
  /// The same for reading.
  const double& operator[](int position) const { return IsValid(position) ? values_[Index(position)] : Scratch(); }

 private:
  bool IsValid(int position) const noexcept { return position >= 1 && position <= Size(); }
  static std::size_t Index(int position) noexcept { return static_cast<std::size_t>(position) - 1; }
  static double& Scratch();

  std::vector<double> values_;
};
