#pragma once

#include "matrix/route_key.h"

namespace tolvane {

class PatchMatrixView;

/// Makes the matrix a table of cells to assistive technology instead of one mute picture. Once is enough,
/// more often does no harm. [main-thread]
void installMatrixAccessibility();

/// What a matrix showed before it was configured.
struct MatrixContents {
  std::int64_t inputCount = 0;
  std::int64_t outputCount = 0;
  RouteKeys connections;
};

/// Tells assistive technology what has changed in the matrix; costs nearly nothing when none is listening.
/// [main-thread]
void announceChanges(const PatchMatrixView& matrix, const MatrixContents& before);

/// Tells assistive technology that the keyboard moved to another cell, if the matrix has the
/// focus. [main-thread]
void announceFocus(const PatchMatrixView& matrix);

}  // namespace tolvane
