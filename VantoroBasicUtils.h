// VantoroBasicUtils.h: every public header of the library.
//
//   #include <VantoroBasicUtils/VantoroBasicUtils.h>
//   LList list;  LListIterator it(list);
#pragma once

#include <VantoroBasicUtils/Version.h>

#include <VantoroBasicUtils/platform/Event.h>
#include <VantoroBasicUtils/platform/Export.h>
#include <VantoroBasicUtils/platform/FileChooser.h>
#include <VantoroBasicUtils/platform/FileInfo.h>
#include <VantoroBasicUtils/platform/GLibMainLoop.h>
#include <VantoroBasicUtils/platform/MessageBox.h>
#include <VantoroBasicUtils/platform/MessageQueue.h>
#include <VantoroBasicUtils/platform/Overlapped.h>
#include <VantoroBasicUtils/platform/Sync.h>
#include <VantoroBasicUtils/platform/Thread.h>

#include <VantoroBasicUtils/text/CStringExtract.h>
#include <VantoroBasicUtils/text/MString.h>
#include <VantoroBasicUtils/text/MStringArray.h>
#include <VantoroBasicUtils/text/MStringList.h>
#include <VantoroBasicUtils/text/PathText.h>
#include <VantoroBasicUtils/text/TextLiteral.h>
#include <VantoroBasicUtils/text/UStringResources.h>
#include <VantoroBasicUtils/text/UStringUtils.h>

#include <VantoroBasicUtils/time/CDateTime.h>
#include <VantoroBasicUtils/time/CDuration.h>
#include <VantoroBasicUtils/time/CTimecode.h>
#include <VantoroBasicUtils/time/CTimecodeList.h>
#include <VantoroBasicUtils/time/CTimecodeParser.h>

#include <VantoroBasicUtils/bytes/ByteOrder.h>
#include <VantoroBasicUtils/bytes/CAppBits.h>
#include <VantoroBasicUtils/bytes/UByteSwapper.h>

#include <VantoroBasicUtils/containers/CVoidList.h>
#include <VantoroBasicUtils/containers/Handle.h>
#include <VantoroBasicUtils/containers/LArray.h>
#include <VantoroBasicUtils/containers/LArrayIterator.h>
#include <VantoroBasicUtils/containers/LComparator.h>
#include <VantoroBasicUtils/containers/MRect.h>
#include <VantoroBasicUtils/containers/StMemoryState.h>
#include <VantoroBasicUtils/containers/UMemUtils.h>

#include <VantoroBasicUtils/files/AsyncReadBuffer.h>
#include <VantoroBasicUtils/files/CFileQuery.h>
#include <VantoroBasicUtils/files/CScriptFile.h>
#include <VantoroBasicUtils/files/ConcatInfo.h>
#include <VantoroBasicUtils/files/MDirectory.h>
#include <VantoroBasicUtils/files/MFile.h>
#include <VantoroBasicUtils/files/MFileSpec.h>
#include <VantoroBasicUtils/files/MFileUniv.h>
#include <VantoroBasicUtils/files/MFiles.h>
#include <VantoroBasicUtils/files/PathTails.h>
#include <VantoroBasicUtils/files/UFileUtils.h>

#include <VantoroBasicUtils/messaging/CBroadcastDispatcher.h>
#include <VantoroBasicUtils/messaging/CMessageAction.h>
#include <VantoroBasicUtils/messaging/CMessageConsole.h>
#include <VantoroBasicUtils/messaging/LBroadcaster.h>
#include <VantoroBasicUtils/messaging/LListener.h>
#include <VantoroBasicUtils/messaging/LNotifier.h>
#include <VantoroBasicUtils/messaging/LResponder.h>
#include <VantoroBasicUtils/messaging/StGlobalLock.h>

#include <VantoroBasicUtils/tasks/CBrevanderThread.h>
#include <VantoroBasicUtils/tasks/CBrevanderWinThread.h>
#include <VantoroBasicUtils/tasks/CIdleProcess.h>
#include <VantoroBasicUtils/tasks/COperation.h>
#include <VantoroBasicUtils/tasks/COperationList.h>
#include <VantoroBasicUtils/tasks/CThreadAction.h>
#include <VantoroBasicUtils/tasks/CThreadDispatcher.h>
#include <VantoroBasicUtils/tasks/CThreadStatus.h>
#include <VantoroBasicUtils/tasks/MBrevanderTaskBase.h>

#include <VantoroBasicUtils/environment/CBrevanderDirectories.h>
#include <VantoroBasicUtils/environment/CBrevanderProfile.h>
#include <VantoroBasicUtils/environment/CPathFileDialog.h>
#include <VantoroBasicUtils/environment/CSharedLibrary.h>
#include <VantoroBasicUtils/environment/CVersionControl.h>
#include <VantoroBasicUtils/environment/MFileDialog.h>
