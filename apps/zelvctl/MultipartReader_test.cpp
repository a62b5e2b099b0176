#include "apps/zelvctl/MultipartReader.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>
#include <vector>

#include "apps/zelvctl/testing/MultipartModel.h"

namespace ZelvCtl {
namespace {

std::string const kBoundary = "6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f10";

std::string delimiter() {
  return "--" + kBoundary + "\r\n";
}

std::string closing() {
  return "--" + kBoundary + "--\r\n";
}

std::string textPart(std::string const& aText) {
  return delimiter() +
         "Content-Type: application/soap+xml; charset=utf-8\r\n"
         "Content-ID: AssetContents\r\n\r\n" +
         aText + "\r\n";
}

std::string filePart(std::string const& aId, std::string const& aBytes,
                     std::string const& aEnd = "\r\n") {
  return delimiter() +
         "Content-Type: image/png\r\nContent-Transfer-Encoding: Little-Endian\r\nContent-ID: " +
         aId + "\r\nContent-Length: " + std::to_string(aBytes.size()) + "\r\n\r\n" + aBytes + aEnd;
}

std::string recorded(std::string const& aAnswer) {
  return MultipartRecord::ofOnePiece(kBoundary, aAnswer);
}

/// As a set sends it, with bytes in a file that look like what surrounds it.
std::string wholeAnswer() {
  return textPart("<a/>\r\n--6f1d") + filePart("1", "PNG\r\n" + delimiter()) + filePart("2", "") +
         textPart("") + filePart("3", "\r\n\r\n", "\r\n\r\n") + closing();
}

std::string wholeRecord() {
  return "text[<a/>\r\n--6f1d]file(1|image/png|" + std::to_string(5 + delimiter().size()) +
         ")[PNG\r\n" + delimiter() +
         "]file(2|image/png|0)[]text[]file(3|image/png|4)[\r\n\r\n] complete";
}

TEST(MultipartReader, TellsOfPartsInTheirOrder) {
  EXPECT_EQ(recorded(wholeAnswer()), wholeRecord());
}

TEST(MultipartReader, ReadsAnAnswerCutAnywhereLikeOneInOnePiece) {
  std::string const answer = wholeAnswer();
  for (std::size_t cut = 0; cut <= answer.size(); ++cut) {
    ASSERT_EQ(MultipartRecord::ofTwoPieces(kBoundary, answer, cut), wholeRecord()) << cut;
  }
}

TEST(MultipartReader, ReadsAnAnswerThatComesByteByByteLikeOneInOnePiece) {
  EXPECT_EQ(MultipartRecord::ofSingleBytes(kBoundary, wholeAnswer()), wholeRecord());
}

TEST(MultipartReader, KnowsAnAnswerWithoutParts) {
  EXPECT_EQ(recorded(closing()), " complete");
}

TEST(MultipartReader, IsCompleteAtTheClosingDelimiterAndNoSooner) {
  std::string const answer = wholeAnswer();
  for (std::size_t size = 0; size < answer.size() - 2; ++size) {
    ASSERT_TRUE(recorded(answer.substr(0, size)).ends_with(" open")) << size;
  }
  EXPECT_TRUE(recorded(answer.substr(0, answer.size() - 2)).ends_with(" complete"));
  EXPECT_EQ(recorded(answer + "whatever" + textPart("x")), wholeRecord());
}

TEST(MultipartReader, ReadsTheNamesOfFieldsInAnyCase) {
  EXPECT_EQ(recorded(delimiter() +
                     "CONTENT-LENGTH:1\r\ncontent-id:\t x y \r\nX-Other:\r\n\r\nz\r\n" + closing()),
            "file(x y||1)[z] complete");
}

TEST(MultipartReader, TakesAPartWithoutHeadForAText) {
  EXPECT_EQ(recorded(delimiter() + "\r\nx\r\n" + closing()), "text[x] complete");
}

TEST(MultipartReader, RefusesWhatIsNoAnswer) {
  std::string const file = delimiter() + "Content-ID: 1\r\n";
  std::vector<std::pair<std::string, std::string>> const rows = {
      {"page", "<html>"},
      {"other boundary", "--6f1d2a3e-0c57-4b8e-9a41-5d7e6b3c2f11\r\n"},
      {"no line end behind a delimiter", "--" + kBoundary + "x"},
      {"half a line end behind a delimiter", "--" + kBoundary + "\rx"},
      {"half a closing delimiter", "--" + kBoundary + "-x"},
      {"delimiter that goes on in a text", textPart("a\r\n--" + kBoundary + "-a")},
      {"line without a colon", delimiter() + "Content-ID\r\n\r\n"},
      {"line without a name", delimiter() + ": x\r\n\r\n"},
      {"no value", delimiter() + "Content-ID: \r\n\r\n"},
      {"two identifiers", file + "Content-Id: 2\r\n\r\n"},
      {"two sizes", file + "Content-Length: 1\r\nContent-Length: 1\r\n\r\n"},
      {"negative size", file + "Content-Length: -1\r\n\r\n"},
      {"size with a sign", file + "Content-Length: +1\r\n\r\n"},
      {"size in other digits", file + "Content-Length: 0x10\r\n\r\n"},
      {"size with a blank", file + "Content-Length: 1 0\r\n\r\n"},
      {"size of 2^63", file + "Content-Length: 9223372036854775808\r\n\r\n"},
      {"size beyond all", file + "Content-Length: 99999999999999999999\r\n\r\n"},
      {"bytes behind a file", filePart("1", "a") + "b"},
      {"line ends without end", std::string(17, '\r')},
  };
  for (auto const& [name, answer] : rows) {
    EXPECT_TRUE(recorded(answer).ends_with(" malformed")) << name;
    EXPECT_TRUE(MultipartRecord::ofSingleBytes(kBoundary, answer).ends_with(" malformed")) << name;
  }
}

TEST(MultipartReader, TakesTheLargestSizeThereIs) {
  EXPECT_EQ(recorded(delimiter() + "Content-Length: 9223372036854775807\r\n\r\nab"),
            "file(||9223372036854775807)[ab open");
}

TEST(MultipartReader, BoundsHeads) {
  std::string const rest = "Content-Length: 0\r\n\r\n";
  std::string const field = "X: " + std::string(MultipartReader::MaxHead - rest.size() - 5, 'x');
  EXPECT_EQ(recorded(delimiter() + field + "\r\n" + rest), "file(||0)[] open");
  EXPECT_EQ(recorded(delimiter() + field + "x\r\n" + rest), " malformed");
}

TEST(MultipartReader, BoundsTexts) {
  std::string const text(MultipartReader::MaxText, 'x');
  EXPECT_EQ(recorded(textPart(text) + closing()), "text[" + text + "] complete");
  EXPECT_EQ(recorded(textPart(text + "x") + closing()), " malformed");
  EXPECT_EQ(recorded(textPart(text + std::string(100, 'x'))), " malformed");
}

TEST(MultipartReader, KeepsNothingOfAFile) {
  class Largest : public MultipartReader::Listener {
   public:
    void onText(std::string const&) override {}
    void onFile(MultipartReader::Part const&) override {}
    void onFileData(std::string_view aBytes) override {
      isPiece = isPiece && aBytes.data() == piece.data();
      size += aBytes.size();
    }
    void onFileEnd() override { isOver = true; }

    std::string piece = std::string(1U << 20U, 'x');
    std::uint64_t size = 0;
    bool isPiece = true;
    bool isOver = false;
  };
  Largest file;
  MultipartReader reader(kBoundary, file);
  reader.read(delimiter() + "Content-Length: 2147483648\r\n\r\n");
  for (int count = 0; count < 2048; ++count) {
    EXPECT_FALSE(file.isOver);
    reader.read(file.piece);
  }
  EXPECT_TRUE(file.isOver);
  EXPECT_EQ(file.size, 2147483648U);
  EXPECT_TRUE(file.isPiece) << "the bytes were copied";
}

TEST(MultipartReader, LetsThroughWhatItsListenerThrows) {
  class Full : public MultipartRecord {
   public:
    void onFileData(std::string_view) override { throw std::runtime_error("disk full"); }
  };
  Full full;
  MultipartReader reader(kBoundary, full);
  try {
    reader.read(filePart("1", "a"));
    ADD_FAILURE();
  } catch (MultipartReader::Malformed const&) {
    ADD_FAILURE() << "the answer is not at fault";
  } catch (std::runtime_error const& error) {
    EXPECT_STREQ(error.what(), "disk full");
  }
}

/// Answers with mistakes in them.
std::string randomAnswer(std::mt19937& aRandom) {
  std::vector<std::string> const tokens = {
      "--G",
      "\r\n",
      "\r\n--G",
      "--G--\r\n",
      "--",
      "\r",
      "\n",
      "-",
      "G",
      ":",
      "x",
      "--G\r\nContent-ID: 1\r\n\r\ntext\r\n",
      "--G\r\nContent-ID: 2\r\nContent-Length: 3\r\n\r\nabc\r\n",
      "Content-Length: 1\r\n",
      "content-type:a\r\n\r\n",
      "Content-Length: 5\r\n\r\n"};
  std::string answer;
  for (std::size_t count = aRandom() % 12; count > 0; --count) {
    answer += tokens[aRandom() % tokens.size()];
  }
  return answer;
}

TEST(MultipartReader, ReadsRandomAnswersAsThePlainModel) {
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    std::string const answer = randomAnswer(random);
    std::string const expected = MultipartModel::of("G", answer);
    ASSERT_EQ(MultipartRecord::ofOnePiece("G", answer), expected) << answer;
    ASSERT_EQ(MultipartRecord::ofSingleBytes("G", answer), expected) << answer;
    std::size_t const cut = random() % (answer.size() + 1);
    ASSERT_EQ(MultipartRecord::ofTwoPieces("G", answer, cut), expected) << answer << " at " << cut;
  }
}

TEST(MultipartReader, FindsTheBoundaryUnderTheWordOfTheSetsAndTheRightOne) {
  for (char const* type :
       {"multipart/related; boundry=G-1", "Multipart/Mixed;type=\"text/xml\";BOUNDRY = \"G-1\" ",
        "multipart/related; boundary=G-1", "multipart/related; a; =; boundry=G-1; boundry=other"}) {
    EXPECT_EQ(MultipartReader::boundaryOf(type), "G-1") << type;
  }
}

TEST(MultipartReader, FindsNoBoundaryInOtherTypes) {
  std::string const longest(70, 'x');
  EXPECT_EQ(MultipartReader::boundaryOf("multipart/related; boundry=" + longest), longest);
  for (std::string const& type :
       {std::string(), std::string("text/xml; charset=utf-8"), std::string("multipart/related"),
        std::string("multipart/related; boundry="), std::string("multipart/related; boundry=\"\""),
        std::string("multipart/related; boundry=a b"),
        std::string("multipart/related; boundry=\xc3\xa4"), std::string("text/xml; boundry=G"),
        "multipart/related; boundry=x" + longest}) {
    EXPECT_EQ(MultipartReader::boundaryOf(type), std::nullopt) << type;
  }
}

}  // namespace
}  // namespace ZelvCtl
