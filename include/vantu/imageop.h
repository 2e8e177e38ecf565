#pragma once

/// All of the library's public names.

#include <vantu/BlendMode.h>
#include <vantu/CDIBLoader.h>
#include <vantu/CDIBSaver.h>
#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CJPEGLoader.h>
#include <vantu/CPNGLoader.h>
#include <vantu/CPostscriptPDFTransferFunction.h>
#include <vantu/CQorImage.h>
#include <vantu/CQorManagedObject.h>
#include <vantu/CQorStorage.h>
#include <vantu/Color.h>
#include <vantu/ColorMap.h>
#include <vantu/Export.h>
#include <vantu/Geometry.h>
#include <vantu/IGraphicsFactory.h>
#include <vantu/IPDFImageBlender.h>
#include <vantu/IPDFTransferFunction.h>
#include <vantu/IQorImage.h>
#include <vantu/IRasterizer.h>
#include <vantu/ImageUtil.h>
#include <vantu/QorIo.h>
