// VantoroBasicUtils.h: every public header of the library.
//
//   #include <VantoroBasicUtils/VantoroBasicUtils.h>
//   LList list;  LListIterator it(list);
#pragma once

#include "platform/Export.h"

#include "containers/CVoidList.h"
#include "containers/Handle.h"
#include "containers/LArray.h"
#include "containers/LArrayIterator.h"
#include "containers/LComparator.h"
#include "containers/MRect.h"
#include "containers/UMemUtils.h"
