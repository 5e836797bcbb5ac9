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
            'CCriticalSection::Lock' 'CSingleLock::Unlock' 'MMessageWindow::PostMessage' 'MThreadQueue::PumpMessages'; do
  if ! grep -qF -- "$name" <<<"$symbols"; then
    echo "not exported: $name"; fail=1
  fi
done
for pattern in 'vbu::' 'anonymous namespace' 'MoveBytes' 'EffectiveSize' 'LArrayOrdering' 'MThreadQueueState' 'ToUtf8'; do
  if grep -qF -- "$pattern" <<<"$symbols"; then
    echo "internal symbol exported:"; grep -F -- "$pattern" <<<"$symbols" | head -n5; fail=1
  fi
done
exit $fail
