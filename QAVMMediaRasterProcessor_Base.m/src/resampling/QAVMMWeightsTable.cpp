#include <QAVMMWeightsTable.h>

#include "resampling/WeightRuns.h"

// Delegates, so that the destructor runs when Evaluate throws.
QAVMMWeightsTable::QAVMMWeightsTable(QAVMMGenericFilter* filter, int dstSize, int srcSize) : QAVMMWeightsTable() {
  const qav::Sampling sampling(filter, dstSize, srcSize);
  windowSize = sampling.windowSize();
  count = dstSize;
  if (dstSize <= 0) return;
  sampling.checkWindow();
  contributions = new QAVMMContribution[static_cast<std::size_t>(dstSize)]();
  for (int i = 0; i < dstSize; ++i) contributions[i].weights = new double[static_cast<std::size_t>(windowSize)];
  for (int i = 0; i < dstSize; ++i) {
    QAVMMContribution& entry = contributions[i];
    sampling.place(entry, i);
    sampling.writeArguments(entry, i);
    sampling.replaceByValues(entry.weights, qav::lengthOf(entry));
    sampling.finish(entry);
  }
}

QAVMMWeightsTable::~QAVMMWeightsTable() {
  for (int i = 0; contributions && i < count; ++i) {
    delete[] contributions[i].weights;
    contributions[i].weights = nullptr;
  }
  delete[] contributions;
  contributions = nullptr;
}
