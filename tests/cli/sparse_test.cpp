// `orv sparse` as a user meets it: what it says of small files, and of bad ones.
#include "tests/support/process.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

namespace orv::test {
namespace {

const std::string command = ORV_COMMAND;

#define EXPECT_SAYS(outcome, part) EXPECT_NE((outcome).text.find(part), std::string::npos) << (outcome).text

class OrvSparse : public testing::Test {
public:
    OrvSparse()
    {
        std::string name = std::filesystem::temp_directory_path() / "orv-sparse-XXXXXX";
        folder = mkdtemp(name.data());
    }
    ~OrvSparse() override { std::filesystem::remove_all(folder); }

    // The file m.mtx with that text.
    std::string file(const std::string& text)
    {
        const std::string path = folder + "/m.mtx";
        std::ofstream(path) << text;
        return path;
    }
    Outcome look_at(const std::string& text, const std::string& words = "")
    {
        return run(command + " sparse " + file(text) + ' ' + words);
    }
    std::string folder;
};

const std::string general = "%%MatrixMarket matrix coordinate real general\n";
const std::string symmetric = "%%MatrixMarket matrix coordinate real symmetric\n";

// The part of the picture between its edges.
std::string picture(const std::string& text)
{
    std::istringstream lines(text);
    std::string all;
    for (std::string line; std::getline(lines, line);)
        if (line.rfind("  |", 0) == 0) all += line.substr(3, line.size() - 4) + '\n';
    return all;
}

TEST_F(OrvSparse, tells_sizes_kind_and_pattern)
{
    const Outcome o = look_at(general + "% a comment\n4 6 5\n1 1 2.5\n2 3 1\n2 4 -1\n4 6 1e3\n4 1 0\n");
    EXPECT_EQ(o.status, 0);
    EXPECT_SAYS(o, "size       4 by 6, 5 entries, 20.8 % of all elements\n");
    EXPECT_SAYS(o, "kind       general\n");
    EXPECT_SAYS(o, "rows       0 to 2 entries, 1.25 on average; 1 are empty\n");
    EXPECT_SAYS(o, "diagonals  up to 3 from the main one, of which 1 of 4 elements are there\n");
    EXPECT_SAYS(o, "check      nothing is wrong\n");
    EXPECT_EQ(picture(o.text), "@     \n  @@  \n      \n@    @\n");
}

TEST_F(OrvSparse, sees_what_a_general_matrix_is)
{
    const std::pair<const char*, const char*> cases[] = {
        {"2 2 2\n1 1 1\n2 2 1\n", "general, in fact diagonal\n"},
        {"2 2 2\n2 1 1\n2 2 1\n", "general, in fact lower triangular\n"},
        {"2 2 2\n1 2 1\n2 2 1\n", "general, in fact upper triangular\n"},
        {"2 2 2\n1 2 3\n2 1 3\n", "general, in fact symmetric\n"},
        {"2 2 2\n1 2 3\n2 1 -3\n", "general, in fact skew-symmetric\n"},
        {"2 2 2\n1 2 3\n2 1 4\n", "general, with a symmetric pattern\n"},
        {"3 3 2\n1 2 3\n3 1 4\n", "general\n"}};
    for (const auto& [body, says] : cases) EXPECT_SAYS(look_at(general + body), std::string("kind       ") + says);
}

TEST_F(OrvSparse, makes_a_symmetric_file_whole_whichever_triangle_it_has)
{
    for (const char* body : {"3 3 3\n1 1 4\n2 1 1\n3 2 1\n", "3 3 3\n1 1 4\n1 2 1\n2 3 1\n"}) {
        const Outcome o = look_at(symmetric + body);
        EXPECT_EQ(o.status, 0);
        EXPECT_SAYS(o, "5 entries (3 in the file)");
        EXPECT_SAYS(o, "kind       symmetric\n");
        EXPECT_EQ(picture(o.text), "@@ \n@ @\n @ \n");
        EXPECT_SAYS(o, "CSR, half");
        EXPECT_SAYS(o, "SKY, half");
    }
}

TEST_F(OrvSparse, compares_formats_by_memory_and_names_the_fastest)
{
    std::string body = "64 64 190\n";
    for (int i = 1; i <= 64; ++i)
        for (int j = std::max(1, i - 1); j <= std::min(64, i + 1); ++j)
            body += std::to_string(i) + ' ' + std::to_string(j) + " 1\n";
    const Outcome o = look_at(general + body);
    EXPECT_EQ(o.status, 0);
    // 65 pointers of 4 bytes and 190 entries of 12; 190 of 16; three diagonals of 64 numbers and 3 distances.
    EXPECT_SAYS(o, "CSR             2.5 KiB        1.00");
    EXPECT_SAYS(o, "COO             3.0 KiB        1.20");
    EXPECT_SAYS(o, "DIA             1.5 KiB        0.61");
    EXPECT_SAYS(o, "BSR 2 ");
    EXPECT_SAYS(o, "BSR 4 ");
    EXPECT_EQ(o.text.find("BSR 3"), std::string::npos) << "64 is no multiple of 3";
    EXPECT_TRUE(std::regex_search(o.text, std::regex("\nThe fastest here is (CSR|CSC|COO|DIA|BSR [248]), "))) << o.text;
}

TEST_F(OrvSparse, leaves_out_formats_that_waste_memory)
{
    std::string body = "2000 2000 2000\n";
    for (int i = 1; i <= 2000; ++i) body += std::to_string(i) + ' ' + std::to_string(1 + i * 577 % 2000) + " 1\n";
    EXPECT_SAYS(look_at(general + body), "DIA         would take ");
}

TEST_F(OrvSparse, says_which_entries_stand_in_one_place_as_the_file_counts_them)
{
    const Outcome o = look_at(general + "3 3 4\n1 1 1\n2 3 1\n3 3 1\n2 3 5\n");
    EXPECT_EQ(o.status, 0);
    EXPECT_SAYS(o, "the entries 2 and 4 both stand in row 2, column 3 (all counted from 1)");
}

TEST_F(OrvSparse, writes_a_picture)
{
    const std::string path = folder + "/p.svg";
    const Outcome o = look_at(general + "3 3 3\n1 1 1\n1 2 1\n3 3 1\n", "--svg " + path);
    EXPECT_EQ(o.status, 0);
    EXPECT_SAYS(o, "picture written to " + path);
    std::stringstream svg;
    svg << std::ifstream(path).rdbuf();
    EXPECT_NE(svg.str().find("<svg xmlns='http://www.w3.org/2000/svg' viewBox='-1 -1 5 5'"), std::string::npos);
    EXPECT_NE(svg.str().find("d='M0 0h2v1h-2zM2 2h1v1h-1z'"), std::string::npos) << svg.str();
    const Outcome nowhere = look_at(general + "1 1 1\n1 1 1\n", "--svg /nowhere/p.svg");
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_SAYS(nowhere, "orv: /nowhere/p.svg: No such file or directory\n");
}

TEST_F(OrvSparse, says_what_is_wrong_with_a_file_and_in_which_line)
{
    const std::pair<std::string, const char*> cases[] = {
        {"hello\n", "m.mtx:1: this is no Matrix Market file"},
        {general + "2 2 1\n3 1 1\n", "m.mtx:3: the row is not from 1 to 2"},
        {general + "2 2 1\n1 1 x\n", "m.mtx:3: no number for the value"},
        {general + "2 2 2\n1 1 1\n", "m.mtx:4: the file ends after 1 of 2 entries"},
        {general + "2 2 1\n1 1 1\n2 2 1\n", "m.mtx:4: more lines than the sizes tell"},
        {symmetric + "2 3 1\n1 1 1\n", "m.mtx:2: a symmetric matrix has as many columns as rows"},
        {"%%MatrixMarket matrix coordinate complex general\n1 1 1\n1 1 1 1\n", "m.mtx:1: complex matrices are not"}};
    for (const auto& [text, says] : cases) {
        const Outcome o = look_at(text);
        EXPECT_EQ(o.status, 1);
        EXPECT_SAYS(o, says);
    }
    EXPECT_SAYS(run(command + " sparse /nowhere.mtx"), "orv: /nowhere.mtx: No such file or directory\n");
}

TEST_F(OrvSparse, answers_words_that_make_no_sense_with_its_usage)
{
    for (const char* words : {"", "a.mtx b.mtx", "--picture", "a.mtx --svg"}) {
        const Outcome o = run(command + " sparse " + words);
        EXPECT_EQ(o.status, 2) << words;
        EXPECT_SAYS(o, "usage: orv sparse FILE.mtx [--svg PICTURE.svg]");
    }
    EXPECT_EQ(run(command + " sparse --help").status, 0);
    EXPECT_SAYS(run(command + " help"), "orv sparse FILE.mtx");
}

} // namespace
} // namespace orv::test
