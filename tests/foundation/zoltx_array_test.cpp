#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/failing_memory.h"
#include "zolt41/foundation/zoltx_ptr_array.h"
#include "zolt41/foundation/zoltx_string_array.h"

namespace {

// An element is known by a letter; null is a point.
char letters[] = "abcdefgh";
void *const letterH = letters + 7;

std::string Elements(ZOLTXPtrArray const &array) {
  std::string elements;
  for (int32_t i = 0; i < array.GetSize(); i++)
    elements += array[i] == nullptr ? '.' : *static_cast<char const *>(array[i]);
  return elements;
}

std::string Texts(ZOLTXStringArray const &array) {
  ZOLTXString texts;
  for (int32_t i = 0; i < array.GetSize(); i++) (texts += array[i]) += ',';
  return texts.GetBuffer();
}

// Adds elements until there are `count`, and gives the sizes at which that took memory.
std::vector<int32_t> SizesAtGrowth(ZOLTXPtrArray &array, int32_t count) {
  std::vector<int32_t> sizes;
  while (array.GetSize() < count) {
    allocationsLeft = 1;
    int32_t const size = array.Add(nullptr);
    bool const grew = allocationsLeft == 0;
    allocationsLeft = -1;
    if (grew) sizes.push_back(size);
  }
  return sizes;
}

TEST(ZOLTXPtrArray, GrowsByTheStatedSteps) {
  ZOLTXPtrArray array;
  std::vector<int32_t> const small = {0, 1, 5, 9, 13, 17, 21, 25, 29, 33, 37, 41, 46, 51, 57};
  EXPECT_EQ(SizesAtGrowth(array, 60), small);
  array.SetSize(8192, 0);
  EXPECT_EQ(SizesAtGrowth(array, 10300), (std::vector<int32_t>{8192, 9216, 10240}));
  array.SetSize(0, 7);
  EXPECT_EQ(array.GetData(), nullptr);
  EXPECT_EQ(SizesAtGrowth(array, 16), (std::vector<int32_t>{0, 1, 8, 15}));
  array.SetSize(40, 1);
  EXPECT_EQ(SizesAtGrowth(array, 42), (std::vector<int32_t>{40, 41}));
}

TEST(ZOLTXPtrArray, KeepsItsBufferUntilAskedToFreeTheRest) {
  ZOLTXPtrArray array;
  array.SetAtGrow(9, letterH);
  void **const buffer = array.GetData();
  array.SetSize(5, -1);
  array.SetSize(10, -1);
  EXPECT_EQ(array.GetData(), buffer);
  EXPECT_EQ(Elements(array), "..........");
  array.RemoveAt(6, 4);
  array.FreeExtra();
  EXPECT_EQ(SizesAtGrowth(array, 7), std::vector<int32_t>{6});
  array.RemoveAt(0, 7);
  EXPECT_NE(array.GetData(), nullptr);
  array.FreeExtra();
  EXPECT_EQ(array.GetData(), nullptr);
}

TEST(ZOLTXPtrArray, InsertsAndRemovesInOrder) {
  ZOLTXPtrArray array;
  for (int32_t i = 0; i < 5; i++) EXPECT_EQ(array.Add(letters + i), i);
  array.InsertAt(2, letterH, 3);
  EXPECT_EQ(Elements(array), "abhhhcde");
  array.RemoveAt(1, 4);
  array.InsertAt(6, letterH, 2);
  EXPECT_EQ(Elements(array), "acde..hh");
  array.RemoveAt(7, 1);
  array.SetAtGrow(8, letterH);
  array.SetAtGrow(0, letterH);
  EXPECT_EQ(Elements(array), "hcde..h.h");
  EXPECT_THROW(array.SetAtGrow(INT32_MAX, letterH), std::bad_alloc);
  EXPECT_THROW(array.InsertAt(0, letterH, INT32_MAX), std::bad_alloc);
  EXPECT_EQ(Elements(array), "hcde..h.h");
}

// A leak, a string that ends twice and a read of one that has ended are seen by the sanitizers.
TEST(ZOLTXStringArray, OwnsItsStrings) {
  ZOLTXStringArray array;
  EXPECT_EQ(array.Add("a") + array.Add("b") + array.Add("c"), 3);
  array.InsertAt(1, "x", 2);
  array.SetAtGrow(6, array.ElementAt(0));
  EXPECT_EQ(Texts(array), "a,x,x,b,c,,a,");
  char const *const text = array.ElementAt(3);
  array.RemoveAt(1, 2);
  array.SetSize(40, -1);
  EXPECT_EQ(array.ElementAt(1).GetBuffer(), text);
  array.SetSize(2, -1);
  array.SetSize(4, -1);
  array.InsertAt(6, "z", 1);
  array.GetAt(0) += "copy";
  array.ElementAt(1) += "own";
  array.FreeExtra();
  EXPECT_EQ(Texts(array), "a,bown,,,,,z,");
}

TEST(ZOLTXStringArray, TakesTextsOfItsOwnAndOfAnother) {
  ZOLTXStringArray array;
  array.Add("a");
  for (int i = 0; i < 5; i++) array.InsertAt(0, array.ElementAt(0), 1);
  ZOLTXStringArray copy;
  array.InsertAt(9, &copy);
  EXPECT_EQ(array.Append(copy), 6);
  copy.Add("old");
  copy.Copy(array);
  EXPECT_EQ(Texts(copy), "a,a,a,a,a,a,");
  array.SetSize(1, -1);
  array.ElementAt(0) = "b";
  EXPECT_EQ(copy.Append(array), 6);
  copy.InsertAt(0, &array);
  copy.RemoveAt(2, 5);
  EXPECT_EQ(Texts(copy), "b,a,b,");
  copy.Copy(array);
  EXPECT_EQ(Texts(copy), "b,");
}

// The buffer, or one of the strings, finds no memory.
TEST(ZOLTXStringArray, IsAsItWasWhenMemoryRunsOut) {
  for (int allocations = 0; allocations < 5; allocations++) {
    ZOLTXStringArray array;
    for (char const *text : {"a", "b", "c"}) array.Add(text);
    allocationsLeft = allocations;
    EXPECT_THROW(array.InsertAt(1, "x", 4), std::bad_alloc);
    allocationsLeft = 0;
    EXPECT_THROW(array.ElementAt(1) += "more", std::bad_alloc);
    EXPECT_THROW(array.ElementAt(1).Set("more", 4), std::bad_alloc);
    allocationsLeft = -1;
    EXPECT_EQ(Texts(array), "a,b,c,");
  }
}

}  // namespace
