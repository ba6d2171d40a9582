// Another project's program: reads a value that somebody has set.

#include <cstdio>

#include "zolt41/zolt41.h"

int main() {
  InitZOLT();
  InitPrefs(nullptr);
  char device[256];
  UserPrefs()->ReadStr(zolt::SectionLetters("AUDI"), "Device", device, "none", 0);
  std::puts(device);
  DisposeZOLT();
}
