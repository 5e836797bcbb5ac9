#!/usr/bin/env bash
# The library exports its public classes and functions by name, and nothing
# of its internals (the platform layer, file-local helpers).
set -euo pipefail
lib=$1
symbols=$(nm -D --defined-only -C "$lib")

fail=0
for name in 'Handle::Resize' 'StPointerBlock::StPointerBlock' 'UMemUtils::memcpy256byte' \
            'BlockCompare(void const*, void const*, unsigned long, unsigned long)' 'ToString10' \
            'LArray::InsertItemsAt' 'LArray::sLongComparator' 'LList::SetItemAt' \
            'LArrayIterator::Next' 'LListIterator::LListIterator' 'vtable for LLongComparator' 'LComparator::IsEqualToKey' \
            'CVoidList::GetAt' 'ListNode::~ListNode' 'MRectList::DeleteAll' 'operator==(MRect const&, MRect const&)' \
            'typeinfo for LArray' 'vtable for LList' \
            'LBroadcaster::BroadcastMessageSelf' 'LListener::ListenToMessage' 'LNotifier::Notify' \
            'LResponder::PassNotify' 'CMessageAction::Error' 'CMessageAction::sMessageAction' \
            'CMessageConsole::CheckMessage' 'StGlobalLock::StGlobalLock' 'StSingleLock::StSingleLock' \
            'CBroadcastDispatcher::sBroadcastDispatcher' 'StBroadcasterSetup::StBroadcasterSetup' \
            'CCriticalSection::Lock' 'CSingleLock::Unlock' 'MMessageWindow::PostMessage' 'MThreadQueue::PumpMessages' \
            'MString::Format' 'MString::ExportASCII' 'operator+(MString const&, MString const&)' 'MStringArray::Change' \
            'MStringList::AddFormat' 'UStringUtils::mABuffer' 'UStringUtils::mTBuffer' 'UStringUtils::strtok' \
            'CStringExtract::GetString' 'vbu::strcasecmp' 'vbu::basename(char*)' 'DirName(MString const&)' \
            'UStringResources::Register' 'StMemoryState::StMemoryState' \
            'CTimecode::Nondrop2Drop' 'CTimecode::SetTotalFrame' 'operator-(CTimecode const&, CTimecode const&)' \
            'CTimecodeParser::Parse' 'CDuration::GetEndTimeUI' 'CDurationList::Change2PAL' 'CDateTime::IsLeapYear' \
            'CAppBits::GetBits' 'CAppBits::sFirstByteMasks' 'CAppBytes::GetBytes' 'GetMB32' 'SetLB16' \
            'UByteSwapper::Swap(char*, short)' 'UByteSwapper::SwapUL' \
            'AddDirectorySeparator(unsigned short const*, bool, unsigned long)' 'DeleteTailCharacter' \
            'MFileSpecWin::CreateUniqueFileSpec' 'MFileSpecWin::IsDriveReadOnly' 'MFile::FileExist' 'vtable for MFile' \
            'MFileUniv::FReadOverlapped' 'MFileUniv::FWaitOverlappedCompletion' 'MFileUniv::ConcatFile' \
            'MFileUniv::FNativeGetts' 'ConcatCompletionRoutine' 'AsyncReadBuffer::ReadBuffer' 'MEvent::Wait' \
            'MFiles::FWrite' 'MFiles::DoSwitchToInfoFile' 'MFiles::IsBrevanderMFiles' 'MFiles::FReadOverlapped' \
            'MDirectory::GetDiskFreeSpaceW' 'DeleteDirectory' 'UFileUtils::DeleteDir' 'CFileQuery::CFileQuery' \
            'CScriptFile::GetListMember' 'CScriptFile::GetToken' \
            'GetLastError' 'vbu::ShowMessageBox' 'vbu::SetTransferRoute' 'vbu::SetFileChooser' 'vbu::GetFileChooser' \
            'CBrevanderProfile::SetAppProfile' 'CBrevanderProfile::GetProfileInt3' 'CBrevanderProfile::sProfilePath' \
            'CBrevanderDirectories::GetAppProfile' 'CBrevanderDirectories::GetEncodedJacketDataDirectory' \
            'CVersionControl::gVersionControl' 'CVersionControl::IsSupportEnhancedDVD' 'kVantoroStandardID' \
            'CSharedLibrary::LoadFunction' 'MFileDialog::sLastFile' 'MFileDialog::AddFilters' \
            'MFileSaveDialogWin::AppendFilterExtension' 'CPathFileDialog::OnTypeChange' 'typeinfo for vbu::FileChooser' 'vbu::FileChooserResult::SetPathName' 'CThreadStatus::AdvancePosition' 'CThreadStatus::sThreadStatus' \
            'CBrevanderThread::Execute' 'CBrevanderThread::GetStatusPosition' 'vtable for CBrevanderThread' \
            'MBrevanderTaskBase::IsStop' 'CThreadAction::sThreadAction' 'CThreadAction::FindThread(unsigned int)' \
            'CThreadDispatcher::GetThreadDispatcher' 'CThreadDispatcher::sThreadDispatcher' 'CBrevanderWinThread::Quit' \
            'gIdleProcesses' 'CIdleProcesses::ExecuteAll' 'CIdleProcess::Execute' 'COperation::Execute' \
            'COperationList::addOperation' 'COperationList::Undo' 'MThread::SuspendThread' 'MThread::ClaimMainThread' \
            'BeginThread' 'vbu::GetLibraryVersion' 'vbu::GetLibraryVersionNumber'; do
  if ! grep -qF -- "$name" <<<"$symbols"; then
    echo "not exported: $name"; fail=1
  fi
done
# The desktop: the GLib main loop's entry, several files from one dialog, and
# the loader of the desktop module kept inside.
for name in 'vbu::AttachToGLibMainLoop' 'vbu::DetachFromGLibMainLoop' 'vbu::FileChooserFilterExtension' \
            'vbu::FileChooserResult::AddPathName' 'MFileDialogWin::GetFile'; do
  if ! grep -qF -- "$name" <<<"$symbols"; then
    echo "not exported: $name"; fail=1
  fi
done
if grep -qF -- 'DesktopChooser' <<<"$symbols"; then echo "internal symbol exported: DesktopChooser"; fail=1; fi
for pattern in 'vbu::wtext' 'vbu::platform' 'vbu::text' 'anonymous namespace' 'MoveBytes' 'EffectiveSize' 'LArrayOrdering' 'MThreadQueueState' 'ToSystemBytes' 'io_uring' 'PathBytes' 'ApplySetting' 'CancellingChooser' 'MThreadRunner' 'MThreadControl'; do
  if grep -qF -- "$pattern" <<<"$symbols"; then
    echo "internal symbol exported:"; grep -F -- "$pattern" <<<"$symbols" | head -n5; fail=1
  fi
done
exit $fail
