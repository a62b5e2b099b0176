#include "zelv/infrastructure/Base64.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>

#include "zelv/infrastructure/testing/LiteralText.h"

namespace Zelv::Infrastructure {
namespace {

using Testing::LiteralText;

std::string decoded(std::string const& aText) {
  try {
    return base64Decode(aText);
  } catch (std::invalid_argument const& e) {
    return e.what();
  }
}

std::string decodedLiterally(std::string const& aText) {
  try {
    return LiteralText::base64Decode(aText);
  } catch (std::invalid_argument const& e) {
    return e.what();
  }
}

TEST(Base64, EncodesTheExamplesOfTheStandard) {
  EXPECT_EQ(base64Encode(""), "");
  EXPECT_EQ(base64Encode("f"), "Zg==");
  EXPECT_EQ(base64Encode("fo"), "Zm8=");
  EXPECT_EQ(base64Encode("foo"), "Zm9v");
  EXPECT_EQ(base64Encode("foob"), "Zm9vYg==");
  EXPECT_EQ(base64Encode("fooba"), "Zm9vYmE=");
  EXPECT_EQ(base64Encode("foobar"), "Zm9vYmFy");
}

TEST(Base64, EncodesEveryValueInTheOrderOfTheAlphabet) {
  std::string bytes;
  for (unsigned i = 0; i < 64; i += 4) {
    unsigned const bits = i << 18 | (i + 1) << 12 | (i + 2) << 6 | (i + 3);
    bytes += static_cast<char>(bits >> 16);
    bytes += static_cast<char>(bits >> 8 & 255);
    bytes += static_cast<char>(bits & 255);
  }
  EXPECT_EQ(base64Encode(bytes),
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 /");
}

TEST(Base64, WritesValue62AsABlankAndAcceptsIt) {
  EXPECT_EQ(base64Encode("\xfb\xef\xbe"), "    ");
  EXPECT_EQ(base64Decode("    "), std::string(3, '\0'));
}

TEST(Base64, AcceptsThePlusSignToo) {
  EXPECT_EQ(base64Decode("+A+ "), std::string(3, '\0'));
}

TEST(Base64, DecodesToZeroesOfTheRightNumber) {
  EXPECT_EQ(base64Decode("QUJD"), std::string(3, '\0'));
  EXPECT_EQ(base64Decode("QQ=="), std::string(1, '\0'));
  EXPECT_EQ(base64Decode("QUI="), std::string(2, '\0'));
  EXPECT_EQ(base64Decode("QUJDQUJD"), std::string(6, '\0'));
  EXPECT_EQ(base64Decode(""), "");
}

TEST(Base64, CountsPaddingWhereverItStands) {
  EXPECT_EQ(base64Decode("=QQ="), std::string(1, '\0'));
  EXPECT_EQ(base64Decode("=AAAAAA="), std::string(4, '\0'));
  EXPECT_EQ(base64Decode("QQ==QUJD"), std::string(4, '\0'));
}

TEST(Base64, RefusesWhatIsNotBase64WithAFixedText) {
  char const length[] = "Not BASE64 Data - Length does not match";
  char const invalid[] = "Not BASE64 Data - Invalid character";
  char const padding[] = "Not BASE64 Data - too much padding";
  EXPECT_EQ(decoded("A"), length);
  EXPECT_EQ(decoded("QUJ"), length);
  EXPECT_EQ(decoded("QUJD!"), length);
  EXPECT_EQ(decoded("QUJ!"), invalid);
  EXPECT_EQ(decoded("QUJ-"), invalid);
  EXPECT_EQ(decoded("QUJ\n"), invalid);
  EXPECT_EQ(decoded("QUJ\xff"), invalid);
  EXPECT_EQ(decoded(std::string("QUJ\0", 4)), invalid);
  EXPECT_EQ(decoded("===!"), invalid);
  EXPECT_EQ(decoded("Q==="), padding);
  EXPECT_EQ(decoded("===="), padding);
  EXPECT_EQ(decoded("QQ==QQ=="), padding);
}

TEST(Base64, DecodesWhatItEncodesToTheSameLength) {
  for (std::size_t size = 0; size < 100; ++size) {
    EXPECT_EQ(base64Decode(base64Encode(std::string(size, 'x'))), std::string(size, '\0'));
  }
}

TEST(Base64, EncodesRandomBytesAsTheLiteralVersion) {
  std::mt19937 random(2);
  for (int i = 0; i < 3000; ++i) {
    std::string bytes(random() % 40, '\0');
    for (char& byte : bytes) {
      byte = static_cast<char>(random());
    }
    ASSERT_EQ(base64Encode(bytes), LiteralText::base64Encode(bytes));
  }
}

TEST(Base64, DecodesRandomTextsAsTheLiteralVersion) {
  std::mt19937 random(3);
  std::string const alphabet = "AZaz09 +/==";
  for (int i = 0; i < 100000; ++i) {
    std::string text(random() % 13, '\0');
    for (char& character : text) {
      character =
          random() % 50 == 0 ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
    }
    ASSERT_EQ(decoded(text), decodedLiterally(text)) << ::testing::PrintToString(text);
  }
}

TEST(Base64, TakesAMebibyte) {
  std::string const bytes(std::size_t{1024} * 1024, '\xff');
  std::string const text = base64Encode(bytes);
  EXPECT_EQ(text.size(), 1398104U);
  EXPECT_EQ(base64Decode(text), std::string(std::size_t{1024} * 1024, '\0'));
}

}  // namespace
}  // namespace Zelv::Infrastructure
