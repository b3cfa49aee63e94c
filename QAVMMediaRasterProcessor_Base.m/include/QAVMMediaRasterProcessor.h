#pragma once

/// @file
/// Every public header of the library and, through them, of the platform.

#include <CCITT_G4.h>
#include <IMGLegacy.h>
#include <QAV5X5ColorMatrix.h>
#include <QAVBaseUnknown.h>
#include <QAVBlockRasterFile.h>
#include <QAVCheck.h>
#include <QAVMMGenericFilter.h>
#include <QAVMMIColorRamp.h>
#include <QAVMMICropping.h>
#include <QAVMMIHelperRGBA.h>
#include <QAVMMIResize.h>
#include <QAVMMResamplingKernels.h>
#include <QAVMMResizeEngine.h>
#include <QAVMMWeightsTable.h>
#include <QAVMMediaImageFormat.h>
#include <QAVMMediaImageProcessor.h>
#include <QAVMMediaRasterVersion.h>
#include <QAVPixelImage.h>
#include <QAVPixelImageComparator.h>
#include <QAVPrintEncoding.h>
#include <QAVPrtImageIterator.h>
#include <QAVResult.h>
#include <QAVSGIImageFile.h>
#include <QAVString.h>
#include <QAVUnicodeString.h>
