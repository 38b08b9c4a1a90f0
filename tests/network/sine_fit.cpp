#include "network/sine_fit.h"

#include <array>
#include <cmath>
#include <utility>

namespace tolvane::test {

namespace {

constexpr std::size_t kUnknowns = 4;
using Vector = std::array<double, kUnknowns>;
using Matrix = std::array<Vector, kUnknowns>;

/// Solves the system by elimination with pivots.
Vector solve(Matrix matrix, Vector right) {
  for (std::size_t column = 0; column < kUnknowns; ++column) {
    std::size_t pivot = column;
    for (std::size_t row = column; row < kUnknowns; ++row) {
      if (std::abs(matrix[row][column]) > std::abs(matrix[pivot][column])) pivot = row;
    }
    std::swap(matrix[column], matrix[pivot]);
    std::swap(right[column], right[pivot]);
    if (matrix[column][column] == 0.0) matrix[column][column] = 1.0;  // of silence: no amplitude, no change
    for (std::size_t row = column + 1; row < kUnknowns; ++row) {
      const double factor = matrix[row][column] / matrix[column][column];
      for (std::size_t i = column; i < kUnknowns; ++i) matrix[row][i] -= factor * matrix[column][i];
      right[row] -= factor * right[column];
    }
  }
  Vector solution{};
  for (std::size_t row = kUnknowns; row-- > 0;) {
    double sum = right[row];
    for (std::size_t i = row + 1; i < kUnknowns; ++i) sum -= matrix[row][i] * solution[i];
    solution[row] = sum / matrix[row][row];
  }
  return solution;
}

/// One step of Gauss and Newton: the amplitudes are linear, the frequency is linearised around the last one.
Sine improve(const std::function<double(std::size_t)>& sample, std::size_t frames, const Sine& last) {
  Matrix matrix{};
  Vector right{};
  const double middle = 0.5 * static_cast<double>(frames - 1);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    const double i = static_cast<double>(frame) - middle;
    const double cosine = std::cos(last.stepRadians * i);
    const double sine = std::sin(last.stepRadians * i);
    const double slope = i * (last.sineAmplitude * cosine - last.cosineAmplitude * sine);
    const Vector row = {cosine, sine, 1.0, slope / static_cast<double>(frames)};
    for (std::size_t a = 0; a < kUnknowns; ++a) {
      for (std::size_t b = 0; b < kUnknowns; ++b) matrix[a][b] += row[a] * row[b];
      right[a] += row[a] * sample(frame);
    }
  }
  const Vector found = solve(matrix, right);
  return {last.stepRadians + found[3] / static_cast<double>(frames), found[0], found[1], found[2]};
}

}  // namespace

double Sine::at(double frameFromMiddle) const {
  const double angle = stepRadians * frameFromMiddle;
  return offset + cosineAmplitude * std::cos(angle) + sineAmplitude * std::sin(angle);
}

double Sine::amplitude() const {
  return std::hypot(cosineAmplitude, sineAmplitude);
}

double Sine::phaseRadians() const {
  return std::atan2(cosineAmplitude, sineAmplitude);
}

Sine fitSine(const std::function<double(std::size_t)>& sample, std::size_t frames, double stepRadians) {
  // The first round has no amplitude yet and so leaves the frequency; three more settle it.
  Sine sine{.stepRadians = stepRadians};
  for (int round = 0; round < 4; ++round) sine = improve(sample, frames, sine);
  return sine;
}

}  // namespace tolvane::test
