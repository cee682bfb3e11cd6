#pragma once

#include "Photos/PHAsset.h"
#include "Photos/PHAssetChangeRequest.h"
#include "Photos/PHAssetCollection.h"
#include "Photos/PHAssetCollectionChangeRequest.h"
#include "Photos/PHError.h"
#include "Photos/PHFetchOptions.h"
#include "Photos/PHFetchResult.h"
#include "Photos/PHObject.h"
#include "Photos/PHPhotoLibrary.h"
