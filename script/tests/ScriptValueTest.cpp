#include "script/ScriptValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

using namespace GLib::Script;

TEST(ScriptValue, TypedReadsOfAnotherTypeGiveTheEmptyValue)
{
    CScriptValue text("abc");
    EXPECT_EQ(text.Type(), CScriptValue::TYPE_STRING);
    EXPECT_EQ(text.GetNumber(), 0.0);
    EXPECT_EQ(text.GetInt(), 0);
    EXPECT_FALSE(text.GetBool());
    EXPECT_EQ(text.GetPointer(), nullptr);
    EXPECT_TRUE(text.GetTable().IsEmpty());
    EXPECT_EQ(&text.GetTable(), &CScriptTable::Empty());

    CScriptValue number(2.5);
    EXPECT_STREQ(number.GetString(), "");
    EXPECT_EQ(number.GetStringLength(), 0);
    EXPECT_EQ(number.GetInt(), 2);
    EXPECT_EQ(CScriptValue(-2.9).GetInt(), -2);
    EXPECT_EQ(CScriptValue(1e12).GetInt(), INT32_MAX);
    EXPECT_EQ(CScriptValue(-1e12).GetInt(), INT32_MIN);
    EXPECT_EQ(CScriptValue(std::nan("")).GetInt(), 0);

    CScriptValue nil;
    EXPECT_TRUE(nil.IsNil());
    EXPECT_STREQ(nil.GetString(), "");

    // A typed write replaces the type and frees what the old value owned.
    text.SetNumber(4.0);
    EXPECT_EQ(text.Type(), CScriptValue::TYPE_NUMBER);
    EXPECT_EQ(text.GetNumber(), 4.0);
    text.SetTable().Set(CScriptValue(1), CScriptValue("one"));
    EXPECT_EQ(text.GetTable().Count(), 1);
    text.SetNil();
    EXPECT_TRUE(text.IsNil());
}

TEST(ScriptValue, StringsKeepEveryByteShortOrLong)
{
    // Seven bytes are held in the value itself, eight and more on the heap.
    for (std::string bytes : {std::string("a\0b\xff", 4), std::string("1234567"), std::string("12345678"),
                              std::string(300, 'z') + std::string(1, '\0')})
    {
        CScriptValue value{std::string_view(bytes)};
        EXPECT_EQ(value.GetStringLength(), static_cast<int32_t>(bytes.size()));
        EXPECT_EQ(value.GetStringView(), bytes);
        EXPECT_EQ(value.GetString()[bytes.size()], '\0');
        CScriptValue copy(value);
        EXPECT_EQ(copy.GetStringView(), bytes);
        EXPECT_NE(copy.GetString(), value.GetString());
        CScriptValue moved(std::move(copy));
        EXPECT_EQ(moved.GetStringView(), bytes);
        copy = moved;
        EXPECT_TRUE(copy.Equals(value));
        EXPECT_EQ(CScriptValue::Compare(copy, value), 0);
    }
    EXPECT_LT(CScriptValue::Compare(CScriptValue("1234567"), CScriptValue("12345678")), 0);
    EXPECT_EQ(CScriptValue(static_cast<const char*>(nullptr)).GetStringView(), "");
}

TEST(ScriptValue, KeyOrderIsTypeCodeThenValue)
{
    int iA = 0;
    int iB = 0;
    void* pLow = &iA < &iB ? static_cast<void*>(&iA) : static_cast<void*>(&iB);
    void* pHigh = &iA < &iB ? static_cast<void*>(&iB) : static_cast<void*>(&iA);
    // Ascending order: booleans (false, true), pointers by address, numbers by value,
    // strings by bytes ("10" before "9", "B" before "a"), then tables.
    const CScriptValue ordered[] = {CScriptValue(false),         CScriptValue(true), CScriptValue(pLow),
                                    CScriptValue(pHigh),         CScriptValue(-1.0), CScriptValue(0.5),
                                    CScriptValue(3.0),           CScriptValue("10"), CScriptValue("9"),
                                    CScriptValue("B"),           CScriptValue("a"),  CScriptValue("ab"),
                                    CScriptValue(CScriptTable())};
    const int iCount = static_cast<int>(sizeof(ordered) / sizeof(ordered[0]));
    for (int i = 0; i < iCount; ++i)
    {
        for (int j = 0; j < iCount; ++j)
        {
            int iExpected = i < j ? -1 : (i > j ? 1 : 0);
            EXPECT_EQ(CScriptValue::Compare(ordered[i], ordered[j]), iExpected) << i << " vs " << j;
        }
    }
    EXPECT_LT(CScriptValue::Compare(CScriptValue(), CScriptValue(false)), 0);
    // Nil and tables compare equal among themselves, whatever tables hold.
    CScriptTable full;
    full.Set(CScriptValue(1), CScriptValue(2));
    EXPECT_EQ(CScriptValue::Compare(CScriptValue(full), CScriptValue(CScriptTable())), 0);
    EXPECT_EQ(CScriptValue::Compare(CScriptValue(), CScriptValue()), 0);
}

TEST(ScriptTable, SetAndAppendKeepOrderAndTheLastValueOfAKey)
{
    CScriptTable set;
    set.Set(CScriptValue("x"), CScriptValue(1));
    set.Set(CScriptValue(2), CScriptValue(20));
    set.Set(CScriptValue(1), CScriptValue(10));
    set.Set(CScriptValue("x"), CScriptValue(5));
    ASSERT_EQ(set.Count(), 3);
    EXPECT_EQ(set.At(0).first.GetNumber(), 1.0);
    EXPECT_EQ(set.At(1).first.GetNumber(), 2.0);
    EXPECT_STREQ(set.At(2).first.GetString(), "x");
    EXPECT_EQ(set.Get("x").GetNumber(), 5.0);
    EXPECT_EQ(set.Get(2).GetNumber(), 20.0);
    EXPECT_TRUE(set.Get("missing").IsNil());
    EXPECT_EQ(set.Find(3.0), nullptr);

    // Bulk: small and large ranges sort differently, both stable with the last key winning.
    for (int iExtra : {0, 40})
    {
        std::vector<CScriptTable::Pair> pairs;
        pairs.emplace_back(CScriptValue("b"), CScriptValue(1));
        pairs.emplace_back(CScriptValue(7), CScriptValue(2));
        pairs.emplace_back(CScriptValue("b"), CScriptValue(3));
        pairs.emplace_back(CScriptValue(true), CScriptValue(4));
        for (int i = 0; i < iExtra; ++i)
        {
            pairs.emplace_back(CScriptValue(100 - i), CScriptValue(i));
        }
        pairs.emplace_back(CScriptValue(7), CScriptValue(5));
        CScriptTable bulk;
        bulk.Set(CScriptValue("old"), CScriptValue(0));
        bulk.AssignMoved(pairs.data(), pairs.data() + pairs.size());
        ASSERT_EQ(bulk.Count(), 3 + iExtra);
        EXPECT_EQ(bulk.At(0).first.Type(), CScriptValue::TYPE_BOOLEAN);
        EXPECT_EQ(bulk.At(1).first.GetNumber(), 7.0);
        EXPECT_EQ(bulk.At(1).second.GetNumber(), 5.0);
        EXPECT_EQ(bulk.Get("b").GetNumber(), 3.0);
        EXPECT_EQ(bulk.Find("old"), nullptr);
        for (int i = 1; i < bulk.Count(); ++i)
        {
            EXPECT_LT(CScriptValue::Compare(bulk.At(i - 1).first, bulk.At(i).first), 0);
        }
    }
}

TEST(ScriptTable, CopiesAreDeep)
{
    CScriptValue root;
    CScriptTable& table = root.SetTable();
    table.Set(CScriptValue("name"), CScriptValue("sword"));
    CScriptTable inner;
    inner.Set(CScriptValue(1), CScriptValue("a"));
    table.Set(CScriptValue("tags"), CScriptValue(inner));

    CScriptValue copy = root;
    EXPECT_TRUE(copy.Equals(root));
    CScriptTable changed = copy.GetTable();
    changed.Set(CScriptValue("name"), CScriptValue("axe"));
    copy = CScriptValue(changed);
    EXPECT_FALSE(copy.Equals(root));
    EXPECT_STREQ(root.GetTable().Get("name").GetString(), "sword");
    EXPECT_STREQ(copy.GetTable().Get("tags").GetTable().Get(1).GetString(), "a");
    EXPECT_NE(&copy.GetTable().Get("tags").GetTable(), &root.GetTable().Get("tags").GetTable());

    CScriptValue moved(std::move(copy));
    EXPECT_TRUE(copy.IsNil()); // NOLINT(bugprone-use-after-move): a moved-from value is nil
    EXPECT_STREQ(moved.GetTable().Get("name").GetString(), "axe");
}

TEST(ScriptTable, TablesGrowCopyAndMoveWhereverTheirPairsLive)
{
    // A table made with room in its own block, then grown past it.
    CScriptValue root;
    CScriptTable& table = root.SetTable(2);
    for (int i = 10; i >= 1; --i)
    {
        table.Set(CScriptValue(i), CScriptValue(std::string(20, static_cast<char>('a' + i))));
    }
    ASSERT_EQ(table.Count(), 10);
    EXPECT_EQ(table.At(0).first.GetNumber(), 1.0);
    EXPECT_EQ(table.Get(10).GetStringView(), std::string(20, 'k'));

    // Copies and moves between values, stack tables and blocks all keep every pair.
    CScriptTable onStack = root.GetTable();
    EXPECT_TRUE(onStack.Equals(root.GetTable()));
    CScriptValue fromMove(std::move(onStack));
    EXPECT_TRUE(onStack.IsEmpty()); // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(fromMove.Equals(root));
    CScriptValue small;
    small.SetTable(3).Set(CScriptValue("x"), CScriptValue(1));
    CScriptTable fromBlock(std::move(small.SetTable()));
    EXPECT_EQ(fromBlock.Get("x").GetNumber(), 1.0);
    EXPECT_TRUE(small.GetTable().IsEmpty());
    fromBlock = root.GetTable();
    EXPECT_EQ(fromBlock.Count(), 10);
    fromBlock = CScriptTable();
    EXPECT_TRUE(fromBlock.IsEmpty());
    fromBlock.Clear();

    // Assignment between values of every kind frees what was held.
    CScriptValue any("a string long enough for the heap");
    any = root;
    any = CScriptValue(3.0);
    any = root;
    any.SetString("short");
    EXPECT_STREQ(any.GetString(), "short");
    any.SetTable();
    EXPECT_TRUE(any.IsTable());
}
