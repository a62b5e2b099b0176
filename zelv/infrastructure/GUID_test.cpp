#include "zelv/infrastructure/GUID.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "zelv/infrastructure/testing/GUIDState.h"
#include "zelv/infrastructure/testing/LiteralText.h"
#include "zelv/platform/fake/FakeClock.h"
#include "zelv/platform/fake/FakeEntropy.h"
#include "zelv/platform/fake/FakeMath.h"
#include "zelv/platform/fake/Fakes.h"

namespace Zelv::Infrastructure {
namespace {

using Platform::Fake::FakeClock;
using Platform::Fake::FakeEntropy;
using Platform::Fake::FakeMath;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Testing::LiteralText;

char const cNull[] = "00000000-0000-0000-0000-000000000000";

// Made while this unit is initialised, which may come before the one of GUID.
std::string const nullTextAtLoad = GUID::nullGUID.toString();
bool const nullComparesAtLoad = GUID::nullGUID == GUID(cNull);
GUID const madeAtLoad = GUID::createGUID();

static_assert(std::has_virtual_destructor_v<GUID>);
static_assert(std::is_nothrow_copy_constructible_v<GUID>);

std::string bytesOf(std::vector<std::uint32_t> const& aDraws) {
  std::string bytes(4 * aDraws.size(), '\0');
  std::memcpy(bytes.data(), aDraws.data(), bytes.size());
  return bytes;
}

/// The text of the exception that reading throws, with its type in front; the identifier's text if
/// there is none.
template <typename Read>
std::string outcome(Read aRead) {
  try {
    return aRead();
  } catch (std::out_of_range const&) {
    return "out_of_range";
  } catch (std::invalid_argument const& e) {
    return std::string("invalid_argument: ") + e.what();
  } catch (std::logic_error const& e) {
    return std::string("logic_error: ") + e.what();
  }
}

std::string read(std::string const& aText) {
  return outcome([&] { return GUID(aText).toString(); });
}

std::string readLiterally(std::string const& aText) {
  return outcome([&] { return LiteralText::readIdentifier(aText); });
}

class GUIDTest : public ::testing::Test {
 protected:
  GUIDTest() {
    Platform::Fake::ResetFakes();
    GUIDState::Forget();
  }
  ~GUIDTest() override {
    Platform::Fake::ResetFakes();
    GUIDState::Forget();
  }
};

TEST_F(GUIDTest, IsAllZeroByDefault) {
  EXPECT_EQ(GUID().toString(), cNull);
  EXPECT_EQ(GUID(), GUID::nullGUID);
}

TEST_F(GUIDTest, NullIsUsableWhileOtherUnitsAreInitialised) {
  EXPECT_EQ(nullTextAtLoad, cNull);
  EXPECT_TRUE(nullComparesAtLoad);
}

TEST_F(GUIDTest, CanBeMadeWhileOtherUnitsAreInitialised) {
  EXPECT_FALSE(madeAtLoad == GUID::nullGUID);
}

TEST_F(GUIDTest, SeedsWithTheFirstDefaultOne) {
  EXPECT_FALSE(GUIDState::Seeded());
  GUID const guid;
  EXPECT_TRUE(GUIDState::Seeded());
  EXPECT_EQ(guid, GUID::nullGUID);
}

TEST_F(GUIDTest, ReadingAndCopyingDoNotSeed) {
  GUID const guid("2cb63c08-01e0-41cd-950e-1566f18e0983");
  GUID copy(guid);
  EXPECT_EQ(copy, guid);
  copy = GUID::nullGUID;
  EXPECT_EQ(guid, GUID("2cb63c08-01e0-41cd-950e-1566f18e0983"));
  EXPECT_FALSE(GUIDState::Seeded());
}

TEST_F(GUIDTest, ParsesTextInBracesLikeTextWithout) {
  GUID const with("{2cb63c08-01e0-41cd-950e-1566f18e0983}");
  GUID const without("2cb63c08-01e0-41cd-950e-1566f18e0983");
  EXPECT_EQ(with, without);
  EXPECT_EQ(with.toString(), "2cb63c08-01e0-41cd-950e-1566f18e0983");
  EXPECT_EQ(without.toString(), "2cb63c08-01e0-41cd-950e-1566f18e0983");
}

TEST_F(GUIDTest, WritesLowerCaseWhateverWasRead) {
  EXPECT_EQ(GUID("2CB63C08-01E0-41CD-950E-1566F18E0983").toString(),
            "2cb63c08-01e0-41cd-950e-1566f18e0983");
}

TEST_F(GUIDTest, FillsEachGroupWithZeroes) {
  EXPECT_EQ(GUID("1       -2   -3   -4   -5           ").toString(),
            "00000001-0002-0003-0000-000000000004");
}

TEST_F(GUIDTest, DoesNotLookAtTheSeparators) {
  GUID const dashes("2cb63c08-01e0-41cd-950e-1566f18e0983");
  EXPECT_EQ(GUID("2cb63c08+01e0z41cd 950e/1566f18e0983"), dashes);
  EXPECT_EQ(GUID("2cb63c08f01e0f41cdf950ef1566f18e0983"), dashes);
}

TEST_F(GUIDTest, DoesNotLookAtWhatFollows) {
  EXPECT_EQ(GUID("2cb63c08-01e0-41cd-950e-1566f18e0983-and more"),
            GUID("2cb63c08-01e0-41cd-950e-1566f18e0983"));
}

TEST_F(GUIDTest, TakesOneBraceAloneForText) {
  EXPECT_EQ(read("{2cb63c08-01e0-41cd-950e-1566f18e0983"), "invalid_argument: Invalid GUID string");
  EXPECT_EQ(read("2cb63c08-01e0-41cd-950e-1566f18e0983}"), "2cb63c08-01e0-41cd-950e-1566f18e0983");
}

TEST_F(GUIDTest, EndsAGroupAtTheFirstCharacterThatIsNoDigit) {
  EXPECT_EQ(read("12 45678-01e0-41cd-950e-1566f18e0983"), "00000012-01e0-41cd-950e-1566f18e0983");
  EXPECT_EQ(read("0x345678-0x12-41cd-950e-1566f18e0983"), "00000000-0000-41cd-950e-1566f18e0983");
  EXPECT_EQ(read("12345678-01e0-41cd-95-e-1566f18e0983"), "12345678-01e0-41cd-0000-000000000095");
  EXPECT_EQ(read("12345678-01e0-41cd-950e-15.6f18e0983"), "12345678-01e0-41cd-0000-000000950e15");
}

TEST_F(GUIDTest, RefusesAGroupThatBeginsWithNoDigit) {
  for (char const* text :
       {" 2345678-01e0-41cd-950e-1566f18e0983", "-2345678-01e0-41cd-950e-1566f18e0983",
        "+2345678-01e0-41cd-950e-1566f18e0983", "x2345678-01e0-41cd-950e-1566f18e0983",
        "12345678-g1e0-41cd-950e-1566f18e0983", "12345678-01e0--1cd-950e-1566f18e0983",
        "12345678-01e0-41cd- 50e-1566f18e0983"}) {
    EXPECT_EQ(read(text), "invalid_argument: Invalid GUID string") << text;
  }
}

TEST_F(GUIDTest, ReadsALastGroupThatIsMissingOrCut) {
  EXPECT_EQ(read("12345678-01e0-41cd-950e-"), "12345678-01e0-41cd-0000-00000000950e");
  EXPECT_EQ(read("12345678-01e0-41cd-950e-15"), "12345678-01e0-41cd-0000-000000950e15");
}

TEST_F(GUIDTest, RefusesWhatItCannotReadWithTheTextThatCallersReport) {
  struct Row {
    std::string text;
    std::string result;
  };
  for (Row const& row : {
           Row{"", "invalid_argument: Empty GUID string"},
           Row{"zzzzzzzz-zzzz-zzzz-zzzz-zzzzzzzzzzzz", "invalid_argument: Invalid GUID string"},
           Row{std::string(36, '\0'), "invalid_argument: Invalid GUID string"},
           Row{"12345678-01e0-41cd-950e", "out_of_range"},
           Row{"1", "out_of_range"},
           Row{"{}", "out_of_range"},
           Row{"{12345678-01e0-41cd-950}", "out_of_range"},
           Row{"abcdefghijklmnopqrstu-", "invalid_argument: Not BASE64 Data - Invalid character"},
           Row{"abcdefghijklmnopqrstu=", "invalid_argument: Not BASE64 Data - too much padding"},
       }) {
    EXPECT_EQ(read(row.text), row.result) << row.text;
  }
  EXPECT_EQ(outcome([] { return GUID(static_cast<char const*>(nullptr)).toString(); }),
            "invalid_argument: NULL GUID string");
  EXPECT_EQ(outcome([] {
              GUID::createFromString(nullptr, "");
              return std::string();
            }),
            "logic_error: NULL GUID Pointer in CreateFromString");
}

TEST_F(GUIDTest, IsAsItWasAfterAFailedRead) {
  GUID const before("2cb63c08-01e0-41cd-950e-1566f18e0983");
  GUID guid(before);
  EXPECT_THROW(GUID::createFromString(&guid, "11111111-1111-1111-zzzz-111111111111"),
               std::invalid_argument);
  EXPECT_EQ(guid, before);
}

TEST_F(GUIDTest, ReadsIntoAnExistingOne) {
  GUID guid;
  GUID::createFromString(&guid, "2cb63c08-01e0-41cd-950e-1566f18e0983");
  EXPECT_EQ(guid, GUID("2cb63c08-01e0-41cd-950e-1566f18e0983"));
}

TEST_F(GUIDTest, ReadsEveryTextOf22Base64CharactersAsNull) {
  EXPECT_EQ(GUID("abcdefghijklmnopqrstuv"), GUID::nullGUID);
  EXPECT_EQ(GUID("ABCDEFGHIJ 0123456789/"), GUID::nullGUID);
  EXPECT_EQ(GUID("++++++++++++++++++++++"), GUID::nullGUID);
  EXPECT_EQ(GUID(GUID::createGUID().toBase64()), GUID::nullGUID);
}

TEST_F(GUIDTest, WritesItsBytesAsBase64WithTheLowByteOfEachPartFirst) {
  EXPECT_EQ(GUID("03020100-0504-0706-0f0e-0d0c0b0a0908").toBase64(), "AAECAwQFBgcICQoLDA0ODw");
  EXPECT_EQ(GUID::nullGUID.toBase64(), "AAAAAAAAAAAAAAAAAAAAAA");
  EXPECT_EQ(GUID("fbfbfbfb-fbfb-fbfb-fbfb-fbfbfbfbfbfb").toBase64(), " /v7 /v7 /v7 /v7 /v7 w");
}

TEST_F(GUIDTest, OrdersByItsPartsAsUnsignedNumbers) {
  std::vector<GUID> const ascending = {
      GUID("00000000-0000-0000-0000-000000000000"), GUID("00000000-0000-0000-7fff-ffffffffffff"),
      GUID("00000000-0000-0000-8000-000000000000"), GUID("00000000-0000-7fff-0000-000000000000"),
      GUID("00000000-0000-8000-0000-000000000000"), GUID("00000000-7fff-0000-0000-000000000000"),
      GUID("00000000-8000-0000-0000-000000000000"), GUID("7fffffff-0000-0000-0000-000000000000"),
      GUID("80000000-0000-0000-0000-000000000000"), GUID("80000000-0000-0000-0000-000000000001"),
      GUID("80000000-0000-0001-0000-000000000000"), GUID("80000000-0001-0000-0000-000000000000")};
  for (std::size_t i = 0; i < ascending.size(); ++i) {
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << " " << j;
      EXPECT_EQ(ascending[i] > ascending[j], i > j) << i << " " << j;
      EXPECT_EQ(ascending[i] == ascending[j], i == j) << i << " " << j;
      EXPECT_EQ(ascending[i] != ascending[j], i != j) << i << " " << j;
    }
  }
}

TEST_F(GUIDTest, IsAssigned) {
  GUID guid;
  guid = GUID("2cb63c08-01e0-41cd-950e-1566f18e0983");
  EXPECT_EQ(guid, GUID("2cb63c08-01e0-41cd-950e-1566f18e0983"));
  guid = GUID::nullGUID;
  EXPECT_EQ(guid, GUID::nullGUID);
}

TEST_F(GUIDTest, IsMadeOfFiveDrawsInOrder) {
  GUID const seeded;
  FakeEntropy::Script(bytesOf({0x01234567, 0xAAAA89AB, 0xBBBBCDEF, 0xFFFFFFFF, 0x76543210}));
  EXPECT_EQ(GUID::createGUID().toString(), "01234567-89ab-4cde-bfff-ffff76543210");
}

TEST_F(GUIDTest, CarriesVersionAndVariantWhateverIsDrawn) {
  GUID const seeded;
  FakeEntropy::Script(std::string(20, '\0') + std::string(20, '\xff'));
  EXPECT_EQ(GUID::createGUID().toString(), "00000000-0000-4000-8000-000000000000");
  EXPECT_EQ(GUID::createGUID().toString(), "ffffffff-ffff-4fff-bfff-ffffffffffff");
  for (int i = 0; i < 1000; ++i) {
    std::string const text = GUID::createGUID().toString();
    ASSERT_EQ(text.size(), 36U);
    ASSERT_EQ(text[14], '4') << text;
    ASSERT_NE(std::string("89ab").find(text[19]), std::string::npos) << text;
    ASSERT_EQ(GUID(text).toString(), text);
  }
}

TEST_F(GUIDTest, ThrowsTheBytesAwayThatItsFirstUseTries) {
  FakeEntropy::Script(std::string(4, 'x') +
                      bytesOf({0x01234567, 0x89AB, 0xCDEF, 0x80000000, 0x76543210}));
  EXPECT_EQ(GUID::createGUID().toString(), "01234567-89ab-4cde-8000-000076543210");
  EXPECT_THAT(FakeMath::Seeds(), IsEmpty());
  EXPECT_EQ(FakeMath::Draws(), 0);
}

// Each of the five draws takes three numbers: (((a << 15) + b) << 2) + (c % 4).
TEST_F(GUIDTest, FallsBackToSeededWeakNumbersWithoutASource) {
  FakeEntropy::FailAll();
  FakeMath::Script({1, 2, 7, 0, 0x1234, 5, 0, 0x2FFF, 4, 32767, 32767, 3, 0, 0x2000, 2});
  GUID const guid = GUID::createGUID();
  EXPECT_THAT(FakeMath::Seeds(), ElementsAre(static_cast<unsigned long>(FakeClock::cStartWall)));
  EXPECT_EQ(FakeMath::Draws(), 15);
  // Draws: 0x2000B, 0x48D1, 0xBFFC, 0xFFFFFFFF, 0x8002.
  EXPECT_EQ(guid.toString(), "0002000b-48d1-4bff-bfff-ffff00008002");
}

TEST_F(GUIDTest, TakesTheRemainderOfAWeakNumberWithItsSign) {
  FakeEntropy::FailAll();
  FakeMath::Script({0, 1, -3, 0, 0, -1, 0, 0, -4, 0, 0, 0, 0, 0, -6});
  EXPECT_EQ(GUID::createGUID().toString(), "00000001-ffff-4000-8000-0000fffffffe");
}

TEST_F(GUIDTest, SeedsWeakNumbersOnce) {
  FakeEntropy::FailAll();
  GUID::createGUID();
  GUID::createGUID();
  GUID const another;
  EXPECT_THAT(FakeMath::Seeds(), ::testing::SizeIs(1));
  EXPECT_EQ(FakeMath::Draws(), 30);
}

TEST_F(GUIDTest, StaysWithWeakNumbersWhenTheSourceFailedAtFirst) {
  FakeEntropy::FailNext(1);
  GUID::createGUID();
  GUID::createGUID();
  EXPECT_EQ(FakeMath::Draws(), 30);
}

TEST_F(GUIDTest, AsksASourceAgainThatFailedLater) {
  GUID const seeded;
  FakeEntropy::FailNext(1);
  GUID::createGUID();
  EXPECT_EQ(FakeMath::Draws(), 15);
  EXPECT_THAT(FakeMath::Seeds(), IsEmpty());
  FakeEntropy::Script(std::string(20, '\xff'));
  EXPECT_EQ(GUID::createGUID().toString(), "ffffffff-ffff-4fff-bfff-ffffffffffff");
  EXPECT_EQ(FakeMath::Draws(), 15);
}

TEST_F(GUIDTest, IsMadeByManyThreadsAtOnceFromTheFirstOn) {
  constexpr int cThreads = 8;
  constexpr int cEach = 500;
  std::vector<std::vector<std::string>> made(cThreads);
  std::vector<std::thread> threads;
  threads.reserve(cThreads);
  for (auto& mine : made) {
    threads.emplace_back([&mine] {
      for (int i = 0; i < cEach; ++i) {
        GUID const none;
        mine.push_back(none == GUID::nullGUID ? GUID::createGUID().toString() : "not null");
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  std::set<std::string> all;
  for (auto const& mine : made) {
    all.insert(mine.begin(), mine.end());
  }
  EXPECT_EQ(all.size(), static_cast<std::size_t>(cThreads) * cEach);
  EXPECT_EQ(all.count("not null"), 0U);
}

TEST_F(GUIDTest, ReadsRandomTextsAsAStreamWould) {
  std::mt19937 random(1);
  std::string const odd("xX+-{} gG.,:\0\t\n=/\x80\xff", 19);
  std::string const digits = "0123456789abcdefABCDEF";
  int readable = 0;
  for (int i = 0; i < 120000; ++i) {
    std::size_t const length = 18 + random() % 24;
    unsigned const oddity = 2 + random() % 40;
    std::string text;
    while (text.size() < length) {
      bool const isOdd = random() % oddity == 0;
      text += isOdd ? odd[random() % odd.size()] : digits[random() % digits.size()];
    }
    if (random() % 4 == 0) {
      text.front() = '{';
      text.back() = '}';
    }
    std::string const result = read(text);
    ASSERT_EQ(result, readLiterally(text)) << ::testing::PrintToString(text);
    readable += result.size() == 36 ? 1 : 0;
  }
  EXPECT_GT(readable, 12000);
  EXPECT_LT(readable, 108000);
}

TEST_F(GUIDTest, ReadsEveryShortBeginOfAGroupAsAStreamWould) {
  std::string const alphabet("09aFxX+- g,\0", 12);
  std::string const tail = "5678-01e0-41cd-950e-1566f18e0983";
  std::string piece(4, ' ');
  for (std::size_t i = 0; i < 12UL * 12 * 12 * 12; ++i) {
    piece[0] = alphabet[i % 12];
    piece[1] = alphabet[i / 12 % 12];
    piece[2] = alphabet[i / 144 % 12];
    piece[3] = alphabet[i / 1728];
    std::string const first = piece + tail;
    ASSERT_EQ(read(first), readLiterally(first)) << ::testing::PrintToString(first);
    std::string const second = "12345678-" + piece + "-41cd-950e-1566f18e0983";
    ASSERT_EQ(read(second), readLiterally(second)) << ::testing::PrintToString(second);
    std::string const fourth = "12345678-01e0-41cd-" + piece + "-1566f18e0983";
    ASSERT_EQ(read(fourth), readLiterally(fourth)) << ::testing::PrintToString(fourth);
  }
}

TEST_F(GUIDTest, SurvivesTextsOfAMebibyte) {
  std::string const many(std::size_t{1024} * 1024, 'f');
  EXPECT_EQ(read(many), "ffffffff-ffff-ffff-ffff-ffffffffffff");
  EXPECT_EQ(read("{" + many + "}"), "ffffffff-ffff-ffff-ffff-ffffffffffff");
  EXPECT_EQ(read(std::string(std::size_t{1024} * 1024, '[')),
            "invalid_argument: Invalid GUID string");
}

}  // namespace
}  // namespace Zelv::Infrastructure
