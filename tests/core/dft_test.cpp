// What a program may ask of a transform, and what it is told when that makes no sense.
#include "tests/core/transforms.h"
#include "tests/support/probe.h"

#include <algorithm>
#include <cstring>
#include <orv/orv.h>
#include <thread>

namespace orv::test {
namespace {

constexpr int c = ORV_DFT_COMPLEX, r = ORV_DFT_REAL;

// The status of a commit, and that its sentence has the words.
void expect_refused(const Transform& t, orv_status status, const std::vector<std::string>& words)
{
    EXPECT_EQ(orv_dft_commit(t), status);
    const std::string sentence = orv_last_error();
    for (const auto& word : words) EXPECT_NE(sentence.find(word), std::string::npos) << sentence << " lacks " << word;
    EXPECT_EQ(t.get(ORV_DFT_COMMITTED), 0);
}

TEST(DftSettings, are_one_transform_in_place_unless_set)
{
    const Transform t(ORV_DFT_SINGLE, r, {6, 5});
    const std::pair<int, i64> defaults[] = {{ORV_DFT_PRECISION, ORV_DFT_SINGLE},
                                            {ORV_DFT_DOMAIN, ORV_DFT_REAL},
                                            {ORV_DFT_RANK, 2},
                                            {ORV_DFT_PLACEMENT, ORV_DFT_IN_PLACE},
                                            {ORV_DFT_STORAGE, ORV_DFT_INTERLEAVED},
                                            {ORV_DFT_FORMAT, ORV_DFT_HALF},
                                            {ORV_DFT_ORDERING, ORV_DFT_ORDERED},
                                            {ORV_DFT_WORKSPACE, ORV_DFT_ALLOW},
                                            {ORV_DFT_DIRECTIONS, ORV_DFT_BOTH},
                                            {ORV_DFT_TRANSFORMS, 1},
                                            {ORV_DFT_SIGNAL_OFFSET, 0},
                                            {ORV_DFT_SPECTRUM_OFFSET, 0},
                                            {ORV_DFT_THREADS, 0},
                                            {ORV_DFT_COMMITTED, 0},
                                            {ORV_DFT_THREADS_USED, 0}};
    for (const auto& [setting, value] : defaults) EXPECT_EQ(t.get(setting), value) << setting;
    double forward = 0, backward = 0;
    EXPECT_EQ(orv_dft_get_scales(t, &forward, &backward), ORV_OK);
    EXPECT_EQ(forward, 1);
    EXPECT_EQ(backward, 1);
    i64 lengths[2];
    EXPECT_EQ(orv_dft_get_lengths(t, lengths), ORV_OK);
    EXPECT_EQ(lengths[0], 6);
    EXPECT_EQ(lengths[1], 5);
}

TEST(DftSettings, read_back_as_they_were_set)
{
    Transform t(ORV_DFT_DOUBLE, c, {4, 3});
    const std::pair<int, i64> values[] = {{ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE},
                                          {ORV_DFT_STORAGE, ORV_DFT_SPLIT},
                                          {ORV_DFT_FORMAT, ORV_DFT_PERM},
                                          {ORV_DFT_ORDERING, ORV_DFT_ANY_ORDER},
                                          {ORV_DFT_WORKSPACE, ORV_DFT_AVOID},
                                          {ORV_DFT_DIRECTIONS, ORV_DFT_BACKWARD},
                                          {ORV_DFT_TRANSFORMS, 77},
                                          {ORV_DFT_SIGNAL_DISTANCE, -12},
                                          {ORV_DFT_SPECTRUM_DISTANCE, 120},
                                          {ORV_DFT_SIGNAL_OFFSET, 5},
                                          {ORV_DFT_SPECTRUM_OFFSET, 6},
                                          {ORV_DFT_THREADS, 3}};
    const i64 strides[2][2] = {{7, -1}, {2, 9}};
    for (const auto& [setting, value] : values) t.set(setting, value);
    EXPECT_EQ(orv_dft_set_strides(t, strides[0], strides[1]), ORV_OK);
    EXPECT_EQ(orv_dft_set_scales(t, 0.5, -3), ORV_OK);

    orv_dft* copy = nullptr;
    ASSERT_EQ(orv_dft_copy(&copy, t), ORV_OK);
    for (const orv_dft* one : {static_cast<const orv_dft*>(t), static_cast<const orv_dft*>(copy)}) {
        for (const auto& [setting, value] : values) {
            i64 found = 0;
            EXPECT_EQ(orv_dft_get(one, setting, &found), ORV_OK);
            EXPECT_EQ(found, value) << setting;
        }
        i64 signal[2], spectrum[2];
        EXPECT_EQ(orv_dft_get_strides(one, signal, spectrum), ORV_OK);
        EXPECT_EQ(std::memcmp(signal, strides[0], sizeof signal), 0);
        EXPECT_EQ(std::memcmp(spectrum, strides[1], sizeof spectrum), 0);
        double forward = 0, backward = 0;
        EXPECT_EQ(orv_dft_get_scales(one, &forward, &backward), ORV_OK);
        EXPECT_EQ(forward, 0.5);
        EXPECT_EQ(backward, -3);
    }
    orv_dft_free(copy);
}

TEST(DftLayout, has_no_gaps_and_the_padding_that_placement_and_format_ask_for)
{
    const auto expect = [](Transform& t, std::vector<i64> signal, i64 signal_distance, std::vector<i64> spectrum,
                           i64 spectrum_distance) {
        EXPECT_EQ(t.strides(false), signal);
        EXPECT_EQ(t.strides(true), spectrum);
        EXPECT_EQ(t.get(ORV_DFT_SIGNAL_DISTANCE), signal_distance);
        EXPECT_EQ(t.get(ORV_DFT_SPECTRUM_DISTANCE), spectrum_distance);
    };
    Transform z(ORV_DFT_DOUBLE, c, {6, 5, 2});
    expect(z, {1, 6, 30}, 60, {1, 6, 30}, 60);
    Transform d(ORV_DFT_DOUBLE, r, {6, 5, 2});
    expect(d, {1, 8, 40}, 80, {1, 4, 20}, 40);
    d.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE);
    expect(d, {1, 6, 30}, 60, {1, 4, 20}, 40);
    Transform odd(ORV_DFT_DOUBLE, r, {7});
    expect(odd, {1}, 8, {1}, 4);
    Transform plane(ORV_DFT_DOUBLE, r, {6, 5});
    plane.set(ORV_DFT_FORMAT, ORV_DFT_CCS);
    expect(plane, {1, 8}, 48, {1, 8}, 48); // a spectrum of 8 by 6
    plane.set(ORV_DFT_FORMAT, ORV_DFT_PACK);
    expect(plane, {1, 6}, 30, {1, 6}, 30);
    plane.set(ORV_DFT_FORMAT, ORV_DFT_CCS).set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE);
    expect(plane, {1, 6}, 30, {1, 8}, 48);
}

TEST(DftLayout, follows_in_place_the_side_that_was_set)
{
    const i64 strides[] = {3, 20};
    Transform z(ORV_DFT_DOUBLE, c, {6, 5});
    EXPECT_EQ(orv_dft_set_strides(z, strides, nullptr), ORV_OK);
    z.set(ORV_DFT_SPECTRUM_OFFSET, 4).set(ORV_DFT_SIGNAL_DISTANCE, 200);
    EXPECT_EQ(z.strides(true), (std::vector<i64>{3, 20}));
    EXPECT_EQ(z.get(ORV_DFT_SIGNAL_OFFSET), 4);
    EXPECT_EQ(z.get(ORV_DFT_SPECTRUM_DISTANCE), 200);
    const i64 rows[] = {1, 10};
    Transform d(ORV_DFT_DOUBLE, r, {6, 5});
    EXPECT_EQ(orv_dft_set_strides(d, nullptr, rows), ORV_OK);
    d.set(ORV_DFT_SIGNAL_OFFSET, 4).set(ORV_DFT_SPECTRUM_DISTANCE, 50);
    EXPECT_EQ(d.strides(false), (std::vector<i64>{1, 20}));
    EXPECT_EQ(d.get(ORV_DFT_SPECTRUM_OFFSET), 2);
    EXPECT_EQ(d.get(ORV_DFT_SIGNAL_DISTANCE), 100);
    EXPECT_EQ(orv_dft_set_strides(d, nullptr, nullptr), ORV_OK);
    EXPECT_EQ(d.strides(false), (std::vector<i64>{1, 8}));
}

TEST(DftArguments, are_answered_with_their_number_and_what_is_wrong)
{
    orv_dft* made = nullptr;
    const i64 lengths[8] = {2, 2, 2, 2, 2, 2, 2, 2}, zero[] = {4, 0}, vast[] = {i64{1} << 40, i64{1} << 40};
    const auto refused = [](orv_status status, int argument, const std::string& word) {
        EXPECT_EQ(status, -argument);
        EXPECT_NE(std::string(orv_last_error()).find(word), std::string::npos) << orv_last_error();
    };
    refused(orv_dft_create(nullptr, ORV_DFT_DOUBLE, c, 1, lengths), 1, "null");
    refused(orv_dft_create(&made, 64, c, 1, lengths), 2, "64");
    refused(orv_dft_create(&made, ORV_DFT_DOUBLE, 7, 1, lengths), 3, "ORV_DFT_REAL");
    refused(orv_dft_create(&made, ORV_DFT_DOUBLE, c, 0, lengths), 4, "1 to 7");
    refused(orv_dft_create(&made, ORV_DFT_DOUBLE, c, 8, lengths), 4, "8");
    refused(orv_dft_create(&made, ORV_DFT_DOUBLE, c, 1, nullptr), 5, "null");
    refused(orv_dft_create(&made, ORV_DFT_DOUBLE, c, 2, zero), 5, "0 for dimension 1");
    refused(orv_dft_create(&made, ORV_DFT_DOUBLE, c, 2, vast), 5, "memory");
    EXPECT_EQ(made, nullptr);

    Transform t(ORV_DFT_DOUBLE, c, {4, 1});
    refused(orv_dft_set(nullptr, ORV_DFT_PLACEMENT, ORV_DFT_IN_PLACE), 1, "null");
    refused(orv_dft_set(t, 99, 1), 2, "99");
    refused(orv_dft_set(t, ORV_DFT_RANK, 1), 2, "set");
    refused(orv_dft_set(t, ORV_DFT_PLACEMENT, 7), 3, "7, but ORV_DFT_PLACEMENT is ORV_DFT_IN_PLACE or");
    refused(orv_dft_set(t, ORV_DFT_FORMAT, 3), 3, "ORV_DFT_CCS");
    refused(orv_dft_set(t, ORV_DFT_TRANSFORMS, -1), 3, "ORV_DFT_TRANSFORMS");
    refused(orv_dft_set(t, ORV_DFT_THREADS, 1025), 3, "1024");
    refused(orv_dft_get(nullptr, ORV_DFT_RANK, nullptr), 1, "null");
    refused(orv_dft_get(t, 0, nullptr), 2, "0");
    const i64 bad[] = {0, 0}, good[] = {1, 0}; // the second dimension has but one element
    refused(orv_dft_set_strides(t, bad, nullptr), 2, "0");
    refused(orv_dft_set_strides(t, good, bad), 3, "0");
    EXPECT_EQ(orv_dft_set_strides(t, good, good), ORV_OK);
    refused(orv_dft_set_strides(nullptr, good, good), 1, "null");
    refused(orv_dft_set_scales(nullptr, 1, 1), 1, "null");
    refused(orv_dft_copy(nullptr, t), 1, "null");
    refused(orv_dft_copy(&made, nullptr), 2, "null");
    refused(orv_dft_commit(nullptr), 1, "null");
    orv_dft_free(nullptr);
    EXPECT_STREQ(orv_dft_method(nullptr), "no transform");
}

TEST(DftSettings, that_contradict_each_other_are_named_with_their_values)
{
    const i64 by_rows[] = {1, 10}, by_columns[] = {5, 1};
    Transform z(ORV_DFT_DOUBLE, c, {6, 5});
    EXPECT_EQ(orv_dft_set_strides(z, by_rows, by_columns), ORV_OK);
    expect_refused(z, ORV_BAD_SETTING, {"in place needs equal strides", "dimension 0", "1", "5"});
    EXPECT_EQ(orv_dft_set_strides(z, by_rows, by_rows), ORV_OK);
    z.set(ORV_DFT_SIGNAL_OFFSET, 3).set(ORV_DFT_SPECTRUM_OFFSET, 4);
    expect_refused(z, ORV_BAD_SETTING, {"offset", "3", "4"});
    z.set(ORV_DFT_SPECTRUM_OFFSET, 3).set(ORV_DFT_TRANSFORMS, 2).set(ORV_DFT_SIGNAL_DISTANCE, 60);
    z.set(ORV_DFT_SPECTRUM_DISTANCE, 70);
    expect_refused(z, ORV_BAD_SETTING, {"distance", "60", "70"});
    z.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE).set(ORV_DFT_SPECTRUM_DISTANCE, 0);
    expect_refused(z, ORV_BAD_SETTING, {"2 transforms", "same spectrum"});
    z.set(ORV_DFT_SPECTRUM_DISTANCE, INT64_MAX / 16);
    expect_refused(z, ORV_BAD_SETTING, {"the spectrum reaches farther than memory"});

    Transform d(ORV_DFT_DOUBLE, r, {6, 5});
    const i64 signal[] = {1, 10}, spectrum[] = {1, 6}, apart[] = {2, 20};
    EXPECT_EQ(orv_dft_set_strides(d, signal, spectrum), ORV_OK);
    expect_refused(d, ORV_BAD_SETTING, {"twice", "dimension 1", "10", "6"});
    EXPECT_EQ(orv_dft_set_strides(d, apart, nullptr), ORV_OK);
    expect_refused(d, ORV_BAD_SETTING, {"stride 1 in dimension 0"});
    EXPECT_EQ(orv_dft_set_strides(d, nullptr, nullptr), ORV_OK);
    d.set(ORV_DFT_STORAGE, ORV_DFT_SPLIT);
    expect_refused(d, ORV_BAD_SETTING, {"ORV_DFT_OUT_OF_PLACE"});
    d.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE).set(ORV_DFT_FORMAT, ORV_DFT_CCS);
    expect_refused(d, ORV_BAD_SETTING, {"packed", "ORV_DFT_INTERLEAVED"});
    Transform cube(ORV_DFT_DOUBLE, r, {6, 5, 4});
    cube.set(ORV_DFT_FORMAT, ORV_DFT_PERM);
    expect_refused(cube, ORV_UNSUPPORTED, {"not 3", "ORV_DFT_HALF"});
}

TEST(DftCommit, is_needed_again_after_a_change_and_only_then)
{
    Transform t(ORV_DFT_DOUBLE, c, {4});
    std::complex<double> x[] = {1, 2, 3, 4};
    const std::complex<double> start[] = {1, 2, 3, 4};
    EXPECT_STREQ(orv_dft_method(t), "not committed");
    EXPECT_EQ(orv_dft_forward(t, x, x), ORV_NOT_COMMITTED);
    EXPECT_EQ(std::memcmp(x, start, sizeof x), 0);
    ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
    EXPECT_EQ(t.get(ORV_DFT_COMMITTED), 1);
    EXPECT_EQ(t.get(ORV_DFT_THREADS_USED), 1);
    t.set(ORV_DFT_TRANSFORMS, 1).set(ORV_DFT_PLACEMENT, ORV_DFT_IN_PLACE);
    EXPECT_EQ(orv_dft_set_scales(t, 1, 1), ORV_OK);
    EXPECT_EQ(orv_dft_set(t, ORV_DFT_PLACEMENT, 7), -3);
    EXPECT_EQ(orv_dft_forward(t, x, x), ORV_OK);
    EXPECT_EQ(x[0], 10.0);
    const i64 unit = 1;
    EXPECT_EQ(orv_dft_set_strides(t, &unit, &unit), ORV_OK); // said now, though no other than before
    EXPECT_EQ(orv_dft_commit(t), ORV_OK);
    EXPECT_EQ(orv_dft_set_strides(t, &unit, &unit), ORV_OK);
    EXPECT_EQ(t.get(ORV_DFT_COMMITTED), 1);
    EXPECT_EQ(orv_dft_set_scales(t, 0.5, 1), ORV_OK);
    EXPECT_EQ(t.get(ORV_DFT_COMMITTED), 0);
    EXPECT_EQ(orv_dft_backward(t, x, x), ORV_NOT_COMMITTED);
    EXPECT_EQ(orv_dft_commit(t), ORV_OK);
    EXPECT_EQ(orv_dft_backward(t, x, x), ORV_OK);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(x[i], 4.0 * start[i]);
}

TEST(DftCommit, is_undone_by_every_setting_that_gets_another_value)
{
    Transform t(ORV_DFT_DOUBLE, c, {4});
    const std::pair<int, i64> others[] = {{ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE},
                                          {ORV_DFT_STORAGE, ORV_DFT_SPLIT},
                                          {ORV_DFT_FORMAT, ORV_DFT_PERM},
                                          {ORV_DFT_ORDERING, ORV_DFT_ANY_ORDER},
                                          {ORV_DFT_WORKSPACE, ORV_DFT_AVOID},
                                          {ORV_DFT_DIRECTIONS, ORV_DFT_FORWARD},
                                          {ORV_DFT_TRANSFORMS, 2},
                                          {ORV_DFT_SIGNAL_DISTANCE, 7},
                                          {ORV_DFT_SPECTRUM_DISTANCE, 8},
                                          {ORV_DFT_SIGNAL_OFFSET, 5},
                                          {ORV_DFT_SPECTRUM_OFFSET, 6},
                                          {ORV_DFT_THREADS, 3}};
    for (const auto& [setting, value] : others) {
        ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
        t.set(setting, value);
        EXPECT_EQ(t.get(ORV_DFT_COMMITTED), 0) << setting;
    }
    const i64 strides[] = {3};
    for (const bool of_spectrum : {false, true}) {
        ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
        EXPECT_EQ(orv_dft_set_strides(t, strides, of_spectrum ? strides : nullptr), ORV_OK);
        EXPECT_EQ(t.get(ORV_DFT_COMMITTED), 0);
    }
}

TEST(DftCompute, refuses_arrays_that_do_not_fit_the_settings)
{
    const auto refused = [](orv_status status, orv_status wanted, const std::string& word) {
        EXPECT_EQ(status, wanted);
        EXPECT_NE(std::string(orv_last_error()).find(word), std::string::npos) << orv_last_error();
    };
    Transform t(ORV_DFT_DOUBLE, c, {4});
    double x[8] = {}, y[8] = {}, u[8], v[8];
    ASSERT_EQ(orv_dft_commit(t), ORV_OK);
    refused(orv_dft_forward(nullptr, x, x), -1, "null");
    refused(orv_dft_forward(t, nullptr, x), -2, "null");
    refused(orv_dft_backward(t, x, nullptr), -3, "null");
    refused(orv_dft_forward(t, x, y), -3, "ORV_DFT_IN_PLACE");
    refused(orv_dft_forward_split(t, x, y, x, y), ORV_BAD_SETTING, "call orv_dft_forward,");
    t.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE).set(ORV_DFT_DIRECTIONS, ORV_DFT_BACKWARD);
    ASSERT_EQ(orv_dft_commit(t), ORV_OK);
    refused(orv_dft_forward(t, x, y), ORV_BAD_SETTING, "ORV_DFT_BACKWARD alone");
    refused(orv_dft_backward(t, x, x), -3, "ORV_DFT_OUT_OF_PLACE");
    EXPECT_EQ(orv_dft_backward(t, x, y), ORV_OK);
    t.set(ORV_DFT_DIRECTIONS, ORV_DFT_FORWARD).set(ORV_DFT_STORAGE, ORV_DFT_SPLIT);
    ASSERT_EQ(orv_dft_commit(t), ORV_OK);
    refused(orv_dft_backward_split(t, x, y, u, v), ORV_BAD_SETTING, "ORV_DFT_FORWARD alone");
    refused(orv_dft_forward(t, x, y), ORV_BAD_SETTING, "orv_dft_forward_split");
    refused(orv_dft_forward_split(t, nullptr, y, u, v), -2, "null");
    refused(orv_dft_forward_split(t, x, nullptr, u, v), -3, "null");
    refused(orv_dft_forward_split(t, x, y, nullptr, v), -4, "null");
    refused(orv_dft_forward_split(t, x, y, u, nullptr), -5, "null");
    refused(orv_dft_forward_split(t, x, y, x, v), -4, "argument 2");
    refused(orv_dft_forward_split(t, x, y, u, y), -5, "argument 3");
    EXPECT_EQ(orv_dft_forward_split(t, x, y, u, v), ORV_OK);
    Transform d(ORV_DFT_DOUBLE, r, {4});
    d.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE).set(ORV_DFT_STORAGE, ORV_DFT_SPLIT);
    ASSERT_EQ(orv_dft_commit(d), ORV_OK);
    refused(orv_dft_forward_split(d, x, nullptr, u, nullptr), -5, "null");
    refused(orv_dft_backward_split(d, u, nullptr, x, nullptr), -3, "null");
    EXPECT_EQ(orv_dft_forward_split(d, x, nullptr, u, v), ORV_OK);
}

TEST(DftCompute, does_nothing_for_no_transforms)
{
    Transform t(ORV_DFT_SINGLE, r, {5, 3});
    t.set(ORV_DFT_TRANSFORMS, 0);
    ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
    EXPECT_EQ(orv_dft_forward(t, nullptr, nullptr), ORV_OK);
    EXPECT_EQ(orv_dft_backward(t, nullptr, nullptr), ORV_OK);
    EXPECT_STREQ(orv_dft_method(t), "nothing to do");
}

TEST(DftCompute, copies_and_scales_where_there_is_but_one_point)
{
    Transform t(ORV_DFT_DOUBLE, c, {1, 1, 1});
    t.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE).set(ORV_DFT_TRANSFORMS, 3).set(ORV_DFT_SPECTRUM_DISTANCE, 2);
    EXPECT_EQ(orv_dft_set_scales(t, 2, 1), ORV_OK);
    ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
    const std::complex<double> x[] = {{1, 2}, {3, 4}, {5, 6}};
    std::complex<double> y[5] = {};
    EXPECT_EQ(orv_dft_forward(t, x, y), ORV_OK);
    for (int i = 0; i < 5; ++i) EXPECT_EQ(y[i], i % 2 ? 0.0 : 2.0 * x[i / 2]);
}

TEST(DftMethod, is_told_in_words_with_threads_and_memory)
{
    Transform t(ORV_DFT_DOUBLE, c, {1000});
    t.set(ORV_DFT_THREADS, 1);
    ASSERT_EQ(orv_dft_commit(t), ORV_OK);
    const std::string words = orv_dft_method(t);
    EXPECT_NE(words.find("; 1 thread; "), std::string::npos) << words;
    EXPECT_NE(words.find(" bytes of work memory a call"), std::string::npos) << words;
    Transform small(ORV_DFT_DOUBLE, c, {64});
    ASSERT_EQ(orv_dft_commit(small), ORV_OK);
    EXPECT_NE(std::string(orv_dft_method(small)).find("bkd3_z"), std::string::npos) << orv_dft_method(small);
}

TEST(DftCommit, without_memory_loses_nothing_and_can_be_tried_again)
{
    const auto commits = [](Transform& t) {
        ProbeScope probe;
        i64 runs = 0;
        for (orv_status status = ORV_NO_MEMORY; status != ORV_OK; ++runs) {
            probe->fail_at = runs, probe->allocations = 0;
            status = orv_dft_commit(t);
            if (status == ORV_OK) break;
            EXPECT_EQ(status, ORV_NO_MEMORY) << orv_last_error();
            EXPECT_EQ(t.get(ORV_DFT_COMMITTED), 0);
            EXPECT_EQ(probe->live, 0) << "after failing allocation " << runs;
            if (runs > 1000 || testing::Test::HasFailure()) break;
        }
        EXPECT_GT(runs, 0);
    };
    std::vector<std::complex<double>> x(60 * 60 * 4), y(60 * 60 * 4);
    for (const int domain : {c, r}) {
        for (const std::vector<i64>& lengths : {std::vector<i64>{60}, {60, 50}, {12, 10, 9}, {5, 5, 5}, {1031}}) {
            for (const int storage : {ORV_DFT_INTERLEAVED, ORV_DFT_SPLIT}) {
                SCOPED_TRACE(std::to_string(domain) + " " + std::to_string(lengths.size()) + " " +
                             std::to_string(storage));
                Transform t(ORV_DFT_DOUBLE, domain, lengths);
                t.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE).set(ORV_DFT_STORAGE, storage);
                commits(t);
                EXPECT_EQ(orv_dft_commit(t), ORV_OK);
                if (storage == ORV_DFT_INTERLEAVED) {
                    EXPECT_EQ(orv_dft_forward(t, x.data(), y.data()), ORV_OK);
                }
            }
        }
    }
}

TEST(DftCompute, without_memory_says_so_and_gives_all_back)
{
    std::vector<double> x(40 * 30 * 10, 1), y(2 * 40 * 30 * 10), z(y.size());
    for (const std::vector<i64>& lengths : {std::vector<i64>{1000}, {40, 30}, {40, 30, 10}}) {
        for (const int domain : {c, r}) {
            for (const int storage : {ORV_DFT_INTERLEAVED, ORV_DFT_SPLIT}) {
                Transform t(ORV_DFT_DOUBLE, domain, lengths);
                t.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE).set(ORV_DFT_STORAGE, storage).set(ORV_DFT_THREADS, 1);
                ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
                std::vector<double> a(2 * x.size(), 0.5), b(a), expected;
                orv_status status = ORV_OK;
                const auto call = [&] {
                    status = storage == ORV_DFT_SPLIT ? orv_dft_forward_split(t, a.data(), b.data(), y.data(), z.data())
                                                      : orv_dft_forward(t, a.data(), y.data());
                };
                call();
                ASSERT_EQ(status, ORV_OK) << orv_last_error();
                expected = y;
                each_allocation_fails(call, [&] {
                    if (status == ORV_OK) EXPECT_EQ(y, expected);
                    else EXPECT_EQ(status, ORV_NO_MEMORY) << orv_last_error();
                });
            }
        }
    }
}

TEST(DftCompute, runs_one_transform_in_several_threads_at_once)
{
    for (const std::vector<i64>& lengths : {std::vector<i64>{1000}, {60, 44}, {10, 12, 14}}) {
        Transform t(ORV_DFT_SINGLE, c, lengths);
        t.set(ORV_DFT_PLACEMENT, ORV_DFT_OUT_OF_PLACE);
        ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
        const i64 n = product(lengths);
        std::vector<std::vector<std::complex<float>>> in, alone, together;
        for (int i = 0; i < 4; ++i) {
            in.emplace_back(n);
            Random random(i);
            for (auto& v : in.back()) v = {random.value<float>(), random.value<float>()};
            alone.emplace_back(n), together.emplace_back(n);
            EXPECT_EQ(orv_dft_forward(t, in[i].data(), alone[i].data()), ORV_OK);
        }
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&, i] {
                for (int times = 0; times < 20; ++times) orv_dft_forward(t, in[i].data(), together[i].data());
            });
        for (auto& thread : threads) thread.join();
        for (int i = 0; i < 4; ++i) EXPECT_EQ(together[i], alone[i]);
    }
}

TEST(DftThreads, change_no_bit_where_they_share_work)
{
    struct {
        int domain;
        std::vector<i64> lengths;
        i64 transforms;
        int least = 1; // fewer threads have another method
    } const cases[] = {{c, {1 << 16}, 1},     {c, {1000}, 37},      {c, {128, 96}, 1}, {c, {32, 20, 24}, 1},
                       {c, {64}, 1000},       {r, {1 << 15}, 1, 2}, {r, {1000}, 37},   {r, {128, 96}, 1},
                       {r, {32, 20, 24}, 1},  {c, {31, 30}, 11},    {r, {30, 31}, 11}, {c, {24, 10, 6, 8}, 1},
                       {r, {24, 10, 6, 8}, 1}};
    for (const auto& p : cases) {
        for (const int placement : {ORV_DFT_IN_PLACE, ORV_DFT_OUT_OF_PLACE}) {
            SCOPED_TRACE(std::to_string(p.domain) + " rank " + std::to_string(p.lengths.size()) + " of " +
                         std::to_string(p.lengths[0]) + " placement " + std::to_string(placement));
            const auto in = random_elements<double>(p.transforms * (2 * product(p.lengths) + 1024), 1);
            std::vector<double> spectrum, signal;
            for (int threads = p.least; threads < p.least + 4; ++threads) {
                Transform t(ORV_DFT_DOUBLE, p.domain, p.lengths);
                t.set(ORV_DFT_PLACEMENT, placement).set(ORV_DFT_THREADS, threads).set(ORV_DFT_TRANSFORMS, p.transforms);
                ASSERT_EQ(orv_dft_commit(t), ORV_OK) << orv_last_error();
                SCOPED_TRACE(std::to_string(threads) + " threads: " + orv_dft_method(t));
                auto there = in, back = in;
                auto& to = placement == ORV_DFT_IN_PLACE ? back : there;
                ASSERT_EQ(orv_dft_forward(t, back.data(), to.data()), ORV_OK);
                if (threads == p.least) spectrum = to;
                EXPECT_TRUE(to == spectrum) << "forward";
                ASSERT_EQ(orv_dft_backward(t, to.data(), back.data()), ORV_OK);
                if (threads == p.least) signal = back;
                EXPECT_TRUE(back == signal) << "backward";
            }
        }
    }
}

TEST(DftThreads, are_one_for_results_that_must_not_depend_on_them)
{
    Transform t(ORV_DFT_DOUBLE, r, {1 << 15});
    t.set(ORV_DFT_THREADS, 3);
    ASSERT_EQ(orv_dft_commit(t), ORV_OK);
    EXPECT_EQ(t.get(ORV_DFT_THREADS_USED), 3) << orv_dft_method(t);
    const int before = orv_get_reproducible();
    orv_set_reproducible(1);
    EXPECT_EQ(orv_dft_commit(t), ORV_OK);
    orv_set_reproducible(before);
    EXPECT_EQ(t.get(ORV_DFT_THREADS_USED), 1) << orv_dft_method(t);
}

} // namespace
} // namespace orv::test
