// The descriptor services against a model of their rules over random arrays
// of rank 0-7 and random triplets (out-of-range and default bounds, reversed,
// zero strides, scalar subscripts): creation, sections, the bounds-check
// words, f90_ElemAddr and the element walk; then the message table, the
// dumps and the storage service.
#include <thread>

#include "frame/descriptor.h"
#include "frame/messages.h"
#include "support/arrays.h"
#include "support/messages.h"

namespace {
using namespace testutil;

// f90_ElemAddr with rank() subscripts (the rest are not read).
char* elem_addr(const ArrDesc* d, const std::vector<int32_t>& s) {
    std::vector<int32_t> v = s;
    v.resize(F90_MAXDIM);
    return static_cast<char*>(f90_ElemAddr(d, v[0], v[1], v[2], v[3], v[4], v[5], v[6]));
}

TEST(Descriptor, ModelOverRandomArraysAndSections) {
    std::mt19937_64 g(7);
    auto pick = [&](int lo, int hi) { return lo + static_cast<int32_t>(g() % static_cast<uint64_t>(hi - lo + 1)); };
    for (int trial = 0; trial < 3000; ++trial) {
        ArrBoundsCheck = trial % 2;
        const int rank = pick(0, 7), es = pick(1, 9);
        std::vector<int32_t> b, lb(rank), ub(rank);
        std::string what = "trial " + std::to_string(trial) + ": bounds";
        for (int k = 0; k < rank; ++k) {
            lb[k] = pick(-3, 3), ub[k] = lb[k] + pick(rank > 4 ? -1 : -2, rank > 4 ? 2 : 4);
            b.push_back(pick(0, 9) ? lb[k] : F90_DEFAULT_MARKER), b.push_back(ub[k]);
            if (b[2 * k] == F90_DEFAULT_MARKER) ub[k] += 1 - lb[k], b[2 * k + 1] = ub[k], lb[k] = 1;
            what.append(" ").append(std::to_string(b[2 * k])).append(":").append(std::to_string(ub[k]));
        }
        Desc a;
        f90_CreateArray(rank, b.data(), es, a);
        int64_t n = 1, low = 0, high = 0;
        std::vector<int64_t> mult, want, got;  // the model's multipliers; (LOWER, UPPER, STRIDE) per dimension
        for (int k = 0; k < rank; ++k) {
            const int64_t e = std::max(ub[k] - lb[k] + 1, 0);
            want.insert(want.end(), {lb[k], e ? ub[k] : lb[k] - 1, n});
            got.insert(got.end(), {a->DIM[k].LOWER, a->DIM[k].UPPER, a->DIM[k].STRIDE});
            mult.push_back(n), low += lb[k] * n, high += ub[k] * n, n *= e;
        }
        want.insert(want.end(), {n, es, es, 0, n ? -low * es : 0, ArrBoundsCheck && n ? low : 0, ArrBoundsCheck && n ? high + 1 : 0});
        got.insert(got.end(), {a->EXTENT, a->ELSIZE, a->SCALEFACTOR, a->NONCONTIG, a->ZERO - a->BASE,
                               ArrBoundsCheck ? a.raw.LOWOFFSET : 0, ArrBoundsCheck ? a.raw.HIGHOFFSET : 0});
        ASSERT_EQ(got, want) << what;
        // A section: per dimension a scalar subscript or a triplet; its
        // elements are the triplet's progression within the bounds.
        std::vector<int32_t> t, at(rank), kept;
        std::vector<std::vector<int32_t>> idx;
        bool gone = false;
        what += "; section";
        for (int k = 0; k < rank; ++k) {
            if (pick(0, 4) == 0) {
                at[k] = pick(0, 9) ? pick(lb[k], std::max(lb[k], ub[k])) : pick(0, 1) ? lb[k] - 1 : ub[k] + 1;
                t.insert(t.end(), {F90_SUBSCRIPT_SCALAR, at[k], 0, 0});
                gone |= at[k] < lb[k] || at[k] > ub[k];
                what.append(" ").append(std::to_string(at[k]));
                continue;
            }
            // Mostly a progression in the stride's direction; sometimes the
            // other way, or a zero stride (both empty).
            int32_t lo = pick(lb[k] - 2, ub[k] + 2), hi = pick(lb[k] - 2, ub[k] + 2), st = pick(0, 15) ? pick(1, 3) : 0;
            if (pick(0, 1)) std::swap(lo, hi);
            if (pick(0, 7)) st = lo <= hi ? st : -st;
            t.insert(t.end(), {F90_SUBSCRIPT_TRIPLET, pick(0, 7) ? lo : F90_DEFAULT_MARKER,
                               pick(0, 7) ? hi : F90_DEFAULT_MARKER, pick(0, 7) ? st : F90_DEFAULT_MARKER});
            for (std::size_t j = t.size() - 3; j < t.size(); ++j) what.append(j + 3 == t.size() ? " " : ":").append(std::to_string(t[j]));
            lo = t[t.size() - 3] == F90_DEFAULT_MARKER ? lb[k] : lo, hi = t[t.size() - 2] == F90_DEFAULT_MARKER ? ub[k] : hi;
            st = t.back() == F90_DEFAULT_MARKER ? 1 : st;
            kept.push_back(k);
            idx.emplace_back();
            for (int32_t i = lo; st && (st > 0 ? i <= hi : i >= hi); i += st)
                if (i >= lb[k] && i <= ub[k]) idx.back().push_back(i);
        }
        Desc s;
        f90_CreateSection(a, t.data(), s);
        ASSERT_EQ(s->RANK, static_cast<int>(idx.size())) << what;
        std::vector<int32_t> ext;
        int64_t m = gone ? 0 : 1;
        for (auto& v : idx) ext.push_back(static_cast<int32_t>(v.size())), m *= static_cast<int64_t>(v.size());
        ASSERT_EQ(s->EXTENT, m) << what;
        EXPECT_EQ(s->NONCONTIG, 1) << what;
        if (m == 0) {
            EXPECT_TRUE(!s->BASE && !s->ZERO && !(ArrBoundsCheck && (s.raw.LOWOFFSET | s.raw.HIGHOFFSET))) << what;
            f90_freespace(a->BASE);
            continue;
        }
        // Every element, by the test's walk, by f90_ElemAddr (on the array
        // and on the section) and by the library's walk, is the array's
        // element at the model's subscripts.
        const std::vector<char*> walk = elements(*s);
        std::vector<int32_t> sub(idx.size(), 0);
        char* lib = static_cast<char*>(f90_FirstElemAddr(s));
        for (std::size_t e = 0; e < walk.size(); ++e) {
            std::vector<int32_t> ssub;
            for (std::size_t q = 0; q < kept.size(); ++q) at[kept[q]] = idx[q][sub[q]], ssub.push_back(s->DIM[q].LOWER + sub[q]);
            char* want = a->BASE;
            for (int k = 0; k < rank; ++k) want += (at[k] - lb[k]) * mult[k] * es;
            ASSERT_EQ(walk[e], want) << what << " element " << e;
            ASSERT_EQ(elem_addr(a, at), want) << what;
            ASSERT_EQ(elem_addr(s, ssub), want) << what;
            ASSERT_EQ(lib, want) << what;
            lib = static_cast<char*>(f90_NextElemAddr());
            for (std::size_t q = 0; q < sub.size() && ++sub[q] == ext[q]; ++q) sub[q] = 0;
        }
        EXPECT_EQ(lib, nullptr) << what;
        EXPECT_EQ(f90_NextElemAddr(), nullptr) << what;
        f90_freespace(a->BASE);
    }
    ArrBoundsCheck = 0;
}

TEST(DescriptorDeath, BadSubscriptWithBoundsCheck) {
    Desc d;
    int32_t b[] = {1, 4};
    f90_CreateArray(1, b, 4, d);
    EXPECT_EQ(f90_ElemAddr(d, 9), d->BASE + 8 * 4);  // unchecked while the switch is off
    for (int32_t i : {0, 5})
        EXPECT_DIES_WITH((ArrBoundsCheck = 1, f90_CreateArray(1, b, 4, d), f90_ElemAddr(d, i)), "f90_ElemAddr: Bad subscript.\n");
}

TEST(MessagesDeath, TableCourses) {
    Array m({{1, 3}, {5, 4}}, 4), s(4), v({{1, 3}}, 4), none({{1, 0}}, 4);
    v.fill<int32_t>({2, -1, 7});
    Section rev(v, {tri(3, 1, -1)});
    const int32_t list45[] = {2, 4, 5}, list0[] = {0};
    const char* t12 = " The RESULT array has size @I. It should have size @I.\n";
    const std::string neg = " The SHAPE argument should have only nonnegative elements.\n The contents of the SHAPE array is: @.\n";
    EXPECT_DIES_WITH(f90_ArrLibError("TRANSPOSE", 1, m.desc(), list45), msg::of("TRANSPOSE", msg::kResultShape, {"(3, 0)", "(4, 5)"}));
    EXPECT_DIES_WITH(f90_ArrLibError("SUM", 2, s.desc(), list0), msg::of("SUM", msg::kResultShape, {"(SCALAR)", "(SCALAR)"}));
    EXPECT_DIES_WITH(f90_ArrLibError("RESHAPE", 2, rev.desc()), msg::of("RESHAPE", neg.c_str(), {"(7, -1, 2)"}));
    EXPECT_DIES_WITH(f90_ArrLibError("RESHAPE", 2, none.desc()), msg::of("RESHAPE", neg.c_str(), {"(EMPTY)"}));
    EXPECT_DIES_WITH(f90_ArrLibError("RESHAPE", 2, s.desc()), msg::of("RESHAPE", neg.c_str(), {"(SCALAR)"}));
    EXPECT_DIES_WITH(f90_ArrLibError("MVBITS", 2, 7, -1, 32), msg::of("MVBITS", msg::kBits, {"TOPOS", "7", "-1", "32"}));
    // A number past a group reads the next word (the next name), past the
    // last group nothing; a name equal to a template's text is found too.
    EXPECT_DIES_WITH(f90_ArrLibError("MAXLOC", 4), msg::of("MAXLOC", "MAXVAL"));
    EXPECT_DIES_WITH(f90_ArrLibError("UNPACK", 4), msg::of("UNPACK", ""));
    EXPECT_DIES_WITH(f90_ArrLibError(t12, 2, v.desc(), m.desc()), msg::of(t12, msg::kArrayMask, {"(3)", "(3, 0)"}));
    for (const char* name : {"KOUNT", "KMAXLOC", ""}) EXPECT_DIES_WITH(f90_ArrLibError(name, 1, 5), msg::unknown(name));
}

TEST(Messages, TemplateExpansion) {
    testing::internal::CaptureStderr();
    intrins::print_message_text("a@Xb@I@", 17);  // an unknown letter prints nothing, takes no value
    const std::string text(1500, 'x');           // literal runs longer than the buffer
    intrins::print_message_text((text + "@I.").c_str(), -2);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "ab17" + text + "-2.");
}

TEST(Dumps, ExactText) {
    Array a({{0, 1}, {-1, 2}}, 4);
    for (int i = 0; i < 8; ++i) a.at<int32_t>(i) = i == 1 ? -128 : i;
    ArgList l{};
    l.Presence = 0x8005, l.Shape = 3, l.Flags = 1, l.Result.w[0] = 0x1234, l.Result.w[1] = 0xabcdef01;
    l.ARG1.w[0] = 1, l.ARG2.w[1] = 2, l.ARG3.w[0] = 3, l.ARG4.w[1] = 4;
    auto word = [](const void* p) {
        char buf[32];
        std::snprintf(buf, sizeof buf, "%08llx", static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(p)));
        return std::string(buf);
    };
    const std::string base = word(a.desc()->BASE);
    std::fflush(stdout);
    testing::internal::CaptureStdout();
    f90_PrintArrDesc(a);
    a.desc()->BASE = nullptr;
    f90_PrintArrDesc(a);
    f90_PrintArgList(&l);
    std::fflush(stdout);
    const std::string head = "- ARRAY DESCRIPTOR     " + word(a.desc()) + "\n- ZERO:" + word(a.desc()->ZERO) + "  BASE:";
    const std::string tail = "\n- EXTENT:8     ELSIZE:4    SCALEFACTOR:4\n- RANK:2  NONCONTIG:0  1(0 1 1) 2(-1 2 2) \n-\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              head + base + " --> 00000000" "ffffff80ffffffffffffffffffffffff" "02000000" "03000000" "04000000" "05000000" "06000000" "07000000" + tail +
                  head + "00000000 -->  NOT PRESENT" + tail +
                  "- ARGUMENT LIST -      Presence:ffff8005    Shape:0003   Flags:00000001\n- Result:  00001234 abcdef01\n"
                  "- ARG 1:   00000001 00000000    ARG 2:   00000000 00000002\n"
                  "- ARG 3:   00000003 00000000    ARG 4:   00000000 00000004\n");
}

}  // namespace
