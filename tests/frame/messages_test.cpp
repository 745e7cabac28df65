// f90_ArrLibError's table, placeholders and unknown-name course, and the two
// diagnostic dumps.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "frame/descriptor.h"
#include "frame/messages.h"
#include "support/arrays.h"

using testutil::Array;

namespace {

const std::string kHead = "ERROR calling the intrinsic subprogram ";
const int32_t kShape45[] = {2, 4, 5};
const int32_t kShape6[] = {1, 6};

TEST(ArrLibErrorDeath, IntegerPlaceholder) {
    EXPECT_DIES_WITH(f90_ArrLibError("REPEAT", 1, -3),
                     kHead + "REPEAT:\n The NCOPIES argument has a value of -3. NCOPIES should be nonnegative.\n");
    EXPECT_DIES_WITH(f90_ArrLibError("MVBITS", 2, 7, -1, 32),
                     kHead + "MVBITS:\n Argument TOPOS has the value 7 and argument LEN has the value -1.\n"
                             " Both arguments should have nonnegative values and their sum should be less than or "
                             "equal to 32.\n");
}

TEST(ArrLibErrorDeath, ShapeOfADescriptor) {
    Array m({{1, 3}, {5, 4}}, 4);
    Array s(4);
    EXPECT_DIES_WITH(f90_ArrLibError("TRANSPOSE", 1, m.desc(), kShape45),
                     kHead + "TRANSPOSE:\n The RESULT array has shape:    (3, 0).\n"
                             " The shape of RESULT should be: (4, 5).\n");
    EXPECT_DIES_WITH(f90_ArrLibError("CSHIFT", 2, s.desc(), m.desc()),
                     kHead + "CSHIFT:\n The RESULT array has shape:    (SCALAR).\n"
                             " The shape of RESULT should be: (3, 0).\n");
}

TEST(ArrLibErrorDeath, ShapeListWithNoDimensions) {
    Array v({{1, 2}}, 4);
    const int32_t none[] = {0};
    EXPECT_DIES_WITH(f90_ArrLibError("SUM", 2, v.desc(), none),
                     kHead + "SUM:\n The RESULT array has shape:    (2).\n The shape of RESULT should be: (SCALAR).\n");
}

TEST(ArrLibErrorDeath, VectorContents) {
    Array shape({{1, 3}}, 4);
    shape.fill<int32_t>({2, -1, 7});
    Array empty({{1, 0}}, 4);
    Array scalar(4);
    const std::string t20 = " The SHAPE argument should have only nonnegative elements.\n The contents of the SHAPE array is: ";
    EXPECT_DIES_WITH(f90_ArrLibError("RESHAPE", 2, shape.desc()), kHead + "RESHAPE:\n" + t20 + "(2, -1, 7).\n");
    EXPECT_DIES_WITH(f90_ArrLibError("RESHAPE", 2, empty.desc()), kHead + "RESHAPE:\n" + t20 + "(EMPTY).\n");
    EXPECT_DIES_WITH(f90_ArrLibError("RESHAPE", 2, scalar.desc()), kHead + "RESHAPE:\n" + t20 + "(SCALAR).\n");

    // A reversed section is read through its stride.
    testutil::Section rev(shape, {testutil::tri(3, 1, -1)});
    EXPECT_DIES_WITH(f90_ArrLibError("RESHAPE", 2, rev.desc()), kHead + "RESHAPE:\n" + t20 + "(7, -1, 2).\n");
}

TEST(ArrLibErrorDeath, TemplateWithoutPlaceholders) {
    EXPECT_DIES_WITH(f90_ArrLibError("MATMUL", 1),
                     kHead + "MATMUL:\n At least one of the array arguments should have rank = 2\n");
}

TEST(ArrLibErrorDeath, NumberPastTheGroupReadsTheNextWord) {
    // MAXLOC has three messages; its fourth word is the next group's name.
    EXPECT_DIES_WITH(f90_ArrLibError("MAXLOC", 4), kHead + "MAXLOC:\nMAXVAL");
    EXPECT_DIES_WITH(f90_ArrLibError("MINLOC", 4), kHead + "MINLOC:\nMINVAL");
    // The last group's next word is the terminator: no template at all.
    EXPECT_DIES_WITH(f90_ArrLibError("UNPACK", 4), kHead + "UNPACK:\n");
}

TEST(ArrLibErrorDeath, EveryGroupSelectsItsOwnTemplates) {
    EXPECT_DIES_WITH(f90_ArrLibError("EOSHIFT", 4, Array(4).desc(), kShape6),
                     kHead + "EOSHIFT:\n The SHIFT array has shape:    (SCALAR).\n The shape of SHIFT should be: (6).\n");
    EXPECT_DIES_WITH(f90_ArrLibError("TRANSFER", 1, -5),
                     kHead + "TRANSFER:\n The SIZE argument has a value -5. Its value should be nonnegative.\n");
    EXPECT_DIES_WITH(f90_ArrLibError("DATEANDTIME", 1, 2, 5, 8),
                     kHead + "DATEANDTIME:\n Argument 2 of the intrinsic function DATEANDTIME has string length 5.\n"
                             " It should have string length at least 8.\n");
    EXPECT_DIES_WITH(f90_ArrLibError("TRIM", 1, 2, 3),
                     kHead + "TRIM:\n The RESULT character string has length 2. It should have length 3.\n");
}

TEST(ArrLibErrorDeath, UnknownNameTakesTheErrorHandlerCourse) {
    for (const char* name : {"KOUNT", "KMAXLOC", "KMINLOC", "KTRANSFER", "KRESHAPE", ""})
        EXPECT_DIES_WITH(f90_ArrLibError(name, 1, 5),
                         std::string("ERROR calling the error handler by the\n intrinsic subprogram, signed by ") +
                             name + ".\n");
}

TEST(ArrLibErrorDeath, NameSearchComparesEveryWord) {
    // A name equal to a template's text is found too: the search compares
    // every word.  Template 12 follows "MAXLOC", so number 1 from it lands on
    // template 2 of MAXLOC's group.
    const char* t12 = " The RESULT array has size @I. It should have size @I.\n";
    Array v({{1, 2}}, 4), w({{1, 3}}, 4);
    EXPECT_DIES_WITH(f90_ArrLibError(t12, 2, v.desc(), w.desc()),
                     kHead + t12 + ":\n Array arguments ARRAY and MASK should have the same shape.\n"
                                   " The shape of argument ARRAY is: (2).\n The shape of argument MASK is:  (3).\n");
}

TEST(MessageText, UnknownLetterPrintsNothingAndTakesNoValue) {
    testing::internal::CaptureStderr();
    intrins::print_message_text("a@Xb@I@", 17);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ab17");
}

TEST(MessageText, LongLiteralRunsAreNotCut) {
    std::string text(1500, 'x');
    testing::internal::CaptureStderr();
    intrins::print_message_text((text + "@I.").c_str(), -2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), text + "-2.");
}

std::string capture_stdout(void (*fn)(const void*), const void* arg) {
    std::fflush(stdout);
    testing::internal::CaptureStdout();
    fn(arg);
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

std::string hex(const void* p) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%08llx", static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(p)));
    return buf;
}

TEST(PrintArrDesc, ExactText) {
    Array a({{0, 1}, {-1, 2}}, 4);
    for (int i = 0; i < 8; ++i) a.at<int32_t>(i) = i == 1 ? -128 : i;
    const ArrDesc* d = a.desc();
    std::string out = capture_stdout([](const void* p) { f90_PrintArrDesc(static_cast<const ArrDesc*>(p)); }, d);
    const std::string bytes = "00000000" "ffffff80ffffffffffffffffffffffff" "02000000" "03000000" "04000000" "05000000" "06000000" "07000000";
    EXPECT_EQ(out, "- ARRAY DESCRIPTOR     " + hex(d) + "\n- ZERO:" + hex(d->ZERO) + "  BASE:" + hex(d->BASE) +
                       " --> " + bytes + "\n- EXTENT:8     ELSIZE:4    SCALEFACTOR:4\n" +
                       "- RANK:2  NONCONTIG:0  1(0 1 1) 2(-1 2 2) \n-\n");
}

TEST(PrintArrDesc, NullBaseIsNotPresent) {
    Array a({{1, 2}}, 4);
    ArrDesc* d = a.desc();
    d->BASE = d->ZERO = nullptr;
    std::string out = capture_stdout([](const void* p) { f90_PrintArrDesc(static_cast<const ArrDesc*>(p)); }, d);
    EXPECT_EQ(out, "- ARRAY DESCRIPTOR     " + hex(d) + "\n- ZERO:00000000  BASE:00000000 -->  NOT PRESENT\n" +
                       "- EXTENT:2     ELSIZE:4    SCALEFACTOR:4\n- RANK:1  NONCONTIG:0  1(1 2 1) \n-\n");
}

TEST(PrintArgList, ExactText) {
    ArgList a{};
    a.Presence = 0x8005;  // top bit set: widened as a signed 16-bit value
    a.Shape = 0x0003;
    a.Flags = 1;
    a.Result.w[0] = 0x1234;
    a.Result.w[1] = 0xabcdef01;
    a.ARG1.w[0] = 1;
    a.ARG2.w[1] = 2;
    a.ARG3.w[0] = 3;
    a.ARG4.w[1] = 4;
    std::string out = capture_stdout([](const void* p) { f90_PrintArgList(static_cast<const ArgList*>(p)); }, &a);
    EXPECT_EQ(out,
              "- ARGUMENT LIST -      Presence:ffff8005    Shape:0003   Flags:00000001\n"
              "- Result:  00001234 abcdef01\n"
              "- ARG 1:   00000001 00000000    ARG 2:   00000000 00000002\n"
              "- ARG 3:   00000003 00000000    ARG 4:   00000000 00000004\n");
}

}  // namespace
