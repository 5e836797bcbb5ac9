// VantoroBasicUtils.h: every public header of the library.
//
//   #include <VantoroBasicUtils/VantoroBasicUtils.h>
//   LList list;  LListIterator it(list);
#pragma once

#include "platform/Export.h"
#include "platform/FileChooser.h"
#include "platform/FileInfo.h"
#include "platform/MessageBox.h"
#include "platform/MessageQueue.h"
#include "platform/Overlapped.h"
#include "platform/Sync.h"

#include "text/CStringExtract.h"
#include "text/MString.h"
#include "text/MStringArray.h"
#include "text/MStringList.h"
#include "text/PathText.h"
#include "text/TextLiteral.h"
#include "text/UStringResources.h"
#include "text/UStringUtils.h"

#include "time/CDateTime.h"
#include "time/CDuration.h"
#include "time/CTimecode.h"
#include "time/CTimecodeList.h"
#include "time/CTimecodeParser.h"

#include "bytes/ByteOrder.h"
#include "bytes/CAppBits.h"
#include "bytes/UByteSwapper.h"

#include "containers/CVoidList.h"
#include "containers/Handle.h"
#include "containers/LArray.h"
#include "containers/LArrayIterator.h"
#include "containers/LComparator.h"
#include "containers/MRect.h"
#include "containers/StMemoryState.h"
#include "containers/UMemUtils.h"

#include "files/AsyncReadBuffer.h"
#include "files/ConcatInfo.h"
#include "files/MFile.h"
#include "files/MFileSpec.h"
#include "files/MFileUniv.h"
#include "files/PathTails.h"

#include "messaging/CBroadcastDispatcher.h"
#include "messaging/CMessageAction.h"
#include "messaging/CMessageConsole.h"
#include "messaging/LBroadcaster.h"
#include "messaging/LListener.h"
#include "messaging/LNotifier.h"
#include "messaging/LResponder.h"
#include "messaging/StGlobalLock.h"

#include "tasks/CThreadStatus.h"

#include "environment/CBrevanderDirectories.h"
#include "environment/CBrevanderProfile.h"
#include "environment/CPathFileDialog.h"
#include "environment/CSharedLibrary.h"
#include "environment/CVersionControl.h"
#include "environment/MFileDialog.h"
