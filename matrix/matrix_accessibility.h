#pragma once

#include "matrix/route_key.h"

namespace tolvane {

class PatchMatrixView;

/// Presents the matrix to assistive technology as a table of cells instead of a picture without text. May be
/// called more than once. [main-thread]
void installMatrixAccessibility();

/// What a matrix showed before it was configured.
struct MatrixContents {
  std::int64_t inputCount = 0;
  std::int64_t outputCount = 0;
  RouteKeys connections;
};

/// Tells assistive technology what has changed in the matrix. Costs nearly nothing if no client is listening.
/// [main-thread]
void announceChanges(const PatchMatrixView& matrix, const MatrixContents& before);

/// Tells assistive technology that the channels may have other names now. [main-thread]
void announceNames(const PatchMatrixView& matrix);

/// Tells assistive technology that the focus cell has moved, if the matrix has the focus. [main-thread]
void announceFocus(const PatchMatrixView& matrix);

}  // namespace tolvane
