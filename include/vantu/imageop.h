#pragma once

/// @file
/// All of the library's public names.

/// @mainpage
///
/// Exact PDF transparency compositing, image utilities and codecs. The entries are vantu::Painter,
/// vantu::IPDFImageBlender, vantu::IPDFTransferFunction, vantu::ImageUtil, vantu::CDIBLoader, vantu::CPNGLoader,
/// vantu::CJPEGLoader, vantu::CDIBSaver and vantu::CPNGSaver; the other names are what they are called with, or what a
/// host implements.
///
/// Everywhere: positions and sizes count pixels, y from the top of the picture; a byte of opacity or colour is 0 to
/// 255; a failure is a false or empty result without a message, and exceptions leave only for exhausted memory and a
/// list that grows too long; an object is used by one thread at a time unless its text says more.

/// @namespace vantu
/// All public names of the library and of the siblings that it calls.

#include <vantu/BlendMode.h>
#include <vantu/CDIBLoader.h>
#include <vantu/CDIBSaver.h>
#include <vantu/CExponentialPDFTransferFunction.h>
#include <vantu/CIdentityPDFTransferFunction.h>
#include <vantu/CJPEGLoader.h>
#include <vantu/CPNGLoader.h>
#include <vantu/CPNGSaver.h>
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
#include <vantu/LoadResult.h>
#include <vantu/Painter.h>
#include <vantu/QorIo.h>
