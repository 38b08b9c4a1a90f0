#include "matrix/patch_matrix_view.h"

#include <QLabel>
#include <QPointer>
#include <algorithm>

#include "base/fatal.h"
#include "matrix/calibrated_color.h"
#include "matrix/lower_left.h"
#include "matrix/matrix_accessibility.h"
#include "matrix/overlay_scroll_view.h"
#include "matrix/patch_matrix_canvas.h"
#include "matrix/patch_matrix_col_header.h"
#include "matrix/patch_matrix_row_header.h"

namespace tolvane {
namespace {

constexpr int kLabelW = static_cast<int>(kLabelWidth);
constexpr int kLabelH = static_cast<int>(kLabelHeight);

void fillWith(QWidget& widget, const QColor& colour) {
  QPalette palette = widget.palette();
  palette.setColor(QPalette::Window, colour);
  widget.setPalette(palette);
  widget.setAutoFillBackground(true);
}

}  // namespace

PatchMatrixView::PatchMatrixView(const QRect& frame, QWidget* parent) : QWidget(parent) {
  setGeometry(frame);
  build();
}

PatchMatrixView::PatchMatrixView(QWidget* parent) : QWidget(parent) {
  build();
}

PatchMatrixView::~PatchMatrixView() = default;

void PatchMatrixView::build() {
  installMatrixAccessibility();
  fillWith(*this, calibratedWhite(0.13));
  buildCorner();
  colHeader = new PatchMatrixColHeader(QRect(), this);
  rowHeader = new PatchMatrixRowHeader(QRect(), this);
  scrollView = new OverlayScrollView(QRect(), this);
  placeScrollingParts();
  buildCanvas();
}

// The captions lie over the corner. placeCorner() keeps both in place on resize.
void PatchMatrixView::buildCorner() {
  const int top = height() - kLabelH;
  auto* plate = new QWidget(this);
  fillWith(*plate, calibratedWhite(0.11));
  const int half = kLabelH / 2;
  corner_ = {{plate, {0, top, kLabelW, kLabelH}}};
  for (const auto& [text, y] :
       {std::pair{QStringLiteral("IN↓"), top + 1}, {QStringLiteral("OUT→"), top + half}}) {
    const QRect frame(1, y, kLabelW - 2, half - 1);
    corner_.push_back({buildCaption(text, frame), frame});
  }
  placeCorner();
}

QWidget* PatchMatrixView::buildCaption(const QString& text, const QRect& frame) {
  auto* caption = new QLabel(text, this);
  QFont font = caption->font();
  font.setPixelSize(7);
  font.setBold(true);
  caption->setFont(font);
  QPalette palette = caption->palette();
  palette.setColor(QPalette::WindowText, calibratedWhite(0.38));
  caption->setPalette(palette);
  caption->setAlignment(Qt::AlignRight | Qt::AlignTop);
  placeFromLowerLeft(*caption, frame);
  return caption;
}

void PatchMatrixView::buildCanvas() {
  canvas = new PatchMatrixCanvas(QRect(0, 0, axisLength(outputCount), axisLength(inputCount)));
  canvas->columnLabels = colHeader;
  canvas->rowLabels = rowHeader;
  const QPointer<const PatchMatrixView> container(this);
  canvas->onToggled = [container](std::int64_t row, std::int64_t column) {
    if (container) {
      container->forward(row, column);
    }
  };
  canvas->onFocusMoved = [this] {
    scrollView->reveal(cellRect(canvas->focusCell()));
    announceFocus(*this);
  };
  canvas->setAccessibleName(QStringLiteral("Patch matrix"));
  scrollView->setDocumentView(canvas);
  scrollView->onBoundsChanged = [this] { didScroll(); };
}

void PatchMatrixView::forward(std::int64_t row, std::int64_t column) const {
  if (onConnectionToggled) {
    onConnectionToggled(row, column);
  }
}

void PatchMatrixView::configure(std::int64_t inputs, std::int64_t outputs,
                                const std::vector<PatchConnection>& routes) {
  if (scrollView == nullptr || canvas == nullptr || colHeader == nullptr || rowHeader == nullptr) {
    fatal("the matrix has lost its parts");
  }
  const MatrixContents before{inputCount, outputCount, connections};
  inputCount = std::max<std::int64_t>(inputs, 1);
  outputCount = std::max<std::int64_t>(outputs, 1);
  RouteKeys keys;
  keys.reserve(routes.size());
  for (const PatchConnection& route : routes) {
    keys.insert(routeKey(route.inputChannel, route.outputChannel));
  }
  connections = std::move(keys);
  scrollView->setDocumentSize({axisLength(outputCount), axisLength(inputCount)});
  canvas->inputCount = inputCount;
  canvas->outputCount = outputCount;
  canvas->connections = connections;
  canvas->update();
  colHeader->outputCount = outputCount;
  colHeader->update();
  rowHeader->inputCount = inputCount;
  rowHeader->update();
  announceChanges(*this, before);
}

void PatchMatrixView::setChannelNames(const ChannelNamer& inputs, const ChannelNamer& outputs) {
  canvas->inputNamer = inputs;
  canvas->outputNamer = outputs;
  rowHeader->namer = inputs;
  colHeader->namer = outputs;
  announceNames(*this);
}

void PatchMatrixView::didScroll() {
  if (scrollView == nullptr || colHeader == nullptr || rowHeader == nullptr) {
    fatal("the matrix has lost its parts");
  }
  const QPoint origin = scrollView->contentOrigin();
  colHeader->scrollOffset = origin.x();
  colHeader->update();
  rowHeader->scrollOffset = origin.y();
  rowHeader->update();
}

void PatchMatrixView::resizeEvent(QResizeEvent* /*event*/) {
  placeScrollingParts();
  placeCorner();
}

void PatchMatrixView::placeScrollingParts() {
  const int gridW = std::max(0, width() - kLabelW);
  const int gridH = std::max(0, height() - kLabelH);
  placeFromLowerLeft(*scrollView, {kLabelW, 0, gridW, gridH});
  placeFromLowerLeft(*colHeader, {kLabelW, height() - kLabelH, gridW, kLabelH});
  placeFromLowerLeft(*rowHeader, {0, 0, kLabelW, gridH});
}

// The corner and its captions keep their built distance to the lower left corner, whatever the height is now.
void PatchMatrixView::placeCorner() {
  for (const FixedPart& part : corner_) {
    placeFromLowerLeft(*part.widget, part.frame);
  }
}

}  // namespace tolvane
