#include "zolt41/platform/kernel/message_loop.h"

#include "tests/support/child.h"

namespace {

std::string shown;
std::vector<HHOOK> hooks;

bool Readable(int descriptor) {
  pollfd poll{descriptor, POLLIN, 0};
  return ::poll(&poll, 1, 0) == 1;
}

uint32_t Next() {
  MSG message{};
  return PeekMessageA(&message, 0, 0, 0, PM_REMOVE) != 0 ? message.message : 0;
}

template <char name>
intptr_t Show(int32_t code, uintptr_t wParam, uintptr_t lParam) {
  shown += wParam == PM_REMOVE ? name : static_cast<char>(name | 0x20);
  // A handle out of a message, which may be anything.
  return CallNextHookEx(reinterpret_cast<MSG const *>(lParam)->lParam, code, wParam, lParam);
}

intptr_t UnhookAll(int32_t code, uintptr_t wParam, uintptr_t lParam) {
  for (HHOOK const hook : hooks) UnhookWindowsHookEx(hook);
  return Show<'U'>(code, wParam, lParam);
}

TEST(MessageLoop, GivesMessagesInOrderAndByRange) {
  uint32_t const self = GetCurrentThreadId();
  for (uint32_t number : {WM_USER, WM_USER + 5, WM_USER + 1})
    ASSERT_EQ(PostThreadMessageA(self, number, number + 1, number + 2), 1);
  MSG message{};
  EXPECT_EQ(PeekMessageA(&message, 0, WM_USER + 1, WM_USER + 9, PM_NOREMOVE), 1);
  EXPECT_EQ(message.message, WM_USER + 5);
  EXPECT_EQ(PeekMessageA(&message, 0, WM_USER + 1, WM_USER + 1, PM_REMOVE), 1);
  EXPECT_EQ(message.wParam, WM_USER + 2);
  EXPECT_EQ(message.lParam, WM_USER + 3);
  EXPECT_EQ(Next(), WM_USER);
  EXPECT_EQ(Next(), WM_USER + 5);
  EXPECT_EQ(Next(), 0U);
  PostThreadMessageA(self, WM_QUIT, 0, 0);
  EXPECT_EQ(GetMessageA(&message, 0, WM_USER, WM_USER), 0) << "passes every filter";
}

TEST(MessageLoop, TheDescriptorIsReadableExactlyWhileMessagesWait) {
  uint32_t const self = GetCurrentThreadId();
  PostThreadMessageA(self, WM_USER, 0, 0);
  int const descriptor = ZOLTQueueDescriptor();
  ASSERT_GE(descriptor, 0);
  EXPECT_TRUE(Readable(descriptor)) << "what waited before it was asked for";
  PostThreadMessageA(self, WM_USER, 0, 0);
  Next();
  EXPECT_TRUE(Readable(descriptor));
  Next();
  EXPECT_FALSE(Readable(descriptor));
  std::thread([self] { PostThreadMessageA(self, WM_USER, 0, 0); }).join();
  EXPECT_TRUE(Readable(descriptor));
  // The child has a descriptor of its own under the number, and takes nothing of the parent's.
  zolt::testing::Child child([&](auto &) { return Readable(descriptor) || Next() != 0 ? 1 : 0; });
  EXPECT_EQ(child.Wait(), 0);
  EXPECT_TRUE(Readable(descriptor));
  EXPECT_EQ(ZOLTDeliver(), 1);
  EXPECT_EQ(ZOLTDeliver(), 0);
  EXPECT_FALSE(Readable(descriptor));
}

TEST(MessageLoop, HooksRunNewestFirstAndMayGoMeanwhile) {
  uint32_t const self = GetCurrentThreadId();
  hooks = {SetWindowsHookExA(WH_GETMESSAGE, Show<'A'>, 0, 0),
           SetWindowsHookExA(WH_GETMESSAGE, Show<'B'>, 0, self)};
  // A stranger's message that names a hook as if it were the next one.
  PostThreadMessageA(self, WM_USER, 0, hooks[1]);
  MSG message{};
  PeekMessageA(&message, 0, 0, 0, PM_NOREMOVE);
  Next();
  EXPECT_EQ(shown, "baBA");
  shown.clear();
  hooks.push_back(SetWindowsHookExA(WH_GETMESSAGE, UnhookAll, 0, 0));
  PostThreadMessageA(self, WM_USER, 0, 0);
  PostThreadMessageA(self, WM_USER, 0, 0);
  EXPECT_EQ(ZOLTDeliver(), 2);
  EXPECT_EQ(shown, "U");
  EXPECT_EQ(UnhookWindowsHookEx(hooks[0]), 0);
  EXPECT_EQ(SetWindowsHookExA(WH_GETMESSAGE + 1, Show<'A'>, 0, 0), 0U);
}

TEST(MessageLoop, AThreadThatIsGoneAndAFullQueueTakeNothing) {
  uint32_t gone = 0;
  std::thread([&gone] { gone = GetCurrentThreadId(); }).join();
  EXPECT_EQ(PostThreadMessageA(gone, WM_USER, 0, 0), 0);
  EXPECT_EQ(SetWindowsHookExA(WH_GETMESSAGE, Show<'A'>, 0, gone), 0U);
  uint32_t const self = GetCurrentThreadId();
  for (int i = 0; i < 10000; i++) ASSERT_EQ(PostThreadMessageA(self, WM_USER, 0, 0), 1);
  EXPECT_EQ(PostThreadMessageA(self, WM_USER, 0, 0), 0);
  EXPECT_EQ(zolt::PostOwnMessage(self, WM_USER, 0, 0), zolt::Post::done) << "ours is not kept out";
  EXPECT_EQ(ZOLTDeliver(), 10001);
}

}  // namespace
