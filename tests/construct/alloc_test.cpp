// Allocation behaviour: this test program supplies its own f90_getspace and
// f90_freespace (they take precedence over the runtime-support library's) to
// count what the entry points obtain and release.
#include <cstdlib>

#include "helpers.h"

namespace {
int g_gets = 0, g_frees = 0;
void* g_last_freed = nullptr;
}  // namespace

extern "C" void* f90_getspace(F90Word n) {
    ++g_gets;
    return std::malloc(n ? n : 1);
}
extern "C" void f90_freespace(void* p) {
    ++g_frees;
    g_last_freed = p;
    std::free(p);
}

namespace ctest {
namespace {

struct Counts {
    int gets = g_gets, frees = g_frees;
    int new_gets() const { return g_gets - gets; }
    int new_frees() const { return g_frees - frees; }
};

TEST(Allocation, PackProvisionalResult) {
    Array a({{1, 4}}, 8);
    Array m({{1, 4}}, 4);
    m.fill<int32_t>({1, 0, 1, 0});
    {  // no VECTOR, no supplied result: provisional, final, provisional released
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, m.desc());
        Counts c;
        f90_pack8(args.get());
        EXPECT_EQ(c.new_gets(), 2);
        EXPECT_EQ(c.new_frees(), 1);
        EXPECT_NE(g_last_freed, r->BASE);
        EXPECT_EQ(r->EXTENT, 2);
        f90_freespace(r->BASE);
    }
    {  // with VECTOR: one allocation, nothing released
        Array v({{1, 3}}, 8);
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, m.desc()).addr(3, v.desc());
        Counts c;
        f90_pack8(args.get());
        EXPECT_EQ(c.new_gets(), 1);
        EXPECT_EQ(c.new_frees(), 0);
        f90_freespace(r->BASE);
    }
}

TEST(Allocation, GenericEoshiftScratchAndReshapeRelease) {
    Array a({{1, 3}}, 5);
    Array s(4);
    s.at<int32_t>(0) = 1;
    {  // default boundary of blanks: scratch obtained and released
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, s.desc());
        Counts c;
        f90_eoshiftn(args.get());
        EXPECT_EQ(c.new_gets(), 2);
        EXPECT_EQ(c.new_frees(), 1);
        f90_freespace(r->BASE);
    }
    {  // the sized entry needs no scratch
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, s.desc());
        Counts c;
        f90_eoshift4(args.get());
        EXPECT_EQ(c.new_gets(), 1);
        EXPECT_EQ(c.new_frees(), 0);
        f90_freespace(r->BASE);
    }
    {  // generic RESHAPE, checks off, result larger than SOURCE, no PAD:
       // created, then released; the sized entry keeps it
        Array shape = ivec({5});
        Desc r;
        Args args;
        args.addr(0, r.get()).addr(1, a.desc()).addr(2, shape.desc());
        Counts c;
        f90_reshapen(args.get());
        EXPECT_EQ(c.new_gets(), 1);
        EXPECT_EQ(c.new_frees(), 1);
        EXPECT_EQ(g_last_freed, r->BASE);
        Desc k;
        args.addr(0, k.get());
        Counts c2;
        f90_reshape4(args.get());
        EXPECT_EQ(c2.new_gets(), 1);
        EXPECT_EQ(c2.new_frees(), 0);
        f90_freespace(k->BASE);
    }
}

}  // namespace
}  // namespace ctest
