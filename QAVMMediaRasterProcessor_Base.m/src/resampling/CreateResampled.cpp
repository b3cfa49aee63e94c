#include <QAVMMediaImageProcessor.h>

QAVPixelImage* QAVMMediaImageProcessor::CreateResampled(const QAVPixelImage&, int, int, QAVMMIResampleType,
                                                        void (*)(float)) {
  return nullptr;
}
