#include <QAVPixelImage.h>

QAVPixelImage* QAVPixelImage::CreateFromFile(const QAVString&, QAVReadOnlyState, int) { return nullptr; }
HRESULT QAVPixelImage::WriteToFile(const QAVString&, const QAVString&) const { return E_FAIL; }
