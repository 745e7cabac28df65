// Randomized differential test against GNU Fortran: SUM, PRODUCT, MAXVAL,
// MINVAL, MAXLOC, MINLOC, COUNT, ALL, ANY with DIM and MASK, and
// DOT_PRODUCT, on INTEGER(4) data of random rank 1-3 with extents including
// 0 and 1, through contiguous arrays with lower bounds other than 1,
// reversed sections and strided sections.  The expected values come from a
// driver compiled by gfortran at test time; without gfortran the test is
// skipped.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "reduce_support.h"

namespace rtest {
namespace {

enum Op { SUM = 1, PRODUCT, MAXVAL, MINVAL, MAXLOC, MINLOC, COUNT, ALL, ANY, DOT };
const char* const kFortranName[] = {"", "sum", "product", "maxval", "minval", "maxloc", "minloc",
                                    "count", "all", "any", "dot_product"};

// The gfortran driver: reads the cases, writes each result flattened in
// array-element order (logicals as 1 or 0).
std::string driver_source() {
    std::ostringstream f;
    f << "program drv\n implicit none\n integer :: nc, ic, op, rk, e(3), dm, hm, n\n"
         " integer, allocatable :: v(:), mv(:), res(:), a1(:), a2(:,:), a3(:,:,:)\n"
         " logical, allocatable :: m1(:), m2(:,:), m3(:,:,:)\n character(len=256) :: fin, fout\n"
         " call get_command_argument(1, fin)\n call get_command_argument(2, fout)\n"
         " open(10, file=fin)\n open(11, file=fout)\n read(10,*) nc\n do ic = 1, nc\n"
         "  read(10,*) op, rk, dm, hm, e\n  n = product(e(1:rk))\n  allocate(v(n), mv(n))\n"
         "  read(10,*) v\n  read(10,*) mv\n  select case (rk)\n"
         "  case (1)\n   a1 = v\n   m1 = mv /= 0\n"
         "  case (2)\n   a2 = reshape(v, e(1:2))\n   m2 = reshape(mv /= 0, e(1:2))\n"
         "  case (3)\n   a3 = reshape(v, e(1:3))\n   m3 = reshape(mv /= 0, e(1:3))\n  end select\n"
         "  select case (rk * 100 + op)\n";
    for (int rk = 1; rk <= 3; ++rk) {
        std::string a = "a", m = "m";  // appended, not "a" + ...: GCC 12 warns wrongly about that on 32-bit
        a += std::to_string(rk);
        m += std::to_string(rk);
        for (int op = SUM; op <= ANY; ++op) {
            std::string fn = kFortranName[op];
            bool logical = op >= COUNT;
            std::string arg = logical ? m : a;
            auto wrap = [&](const std::string& call) {
                return op == ALL || op == ANY ? "merge(1, 0, " + call + ")" : call;
            };
            f << "  case (" << rk * 100 + op << ")\n";
            f << "   if (dm == 0 .and. hm == 0) then\n    res = [" << wrap(fn + "(" + arg + ")") << "]\n";
            if (!logical) f << "   else if (dm == 0) then\n    res = [" << fn << "(" << a << ", mask=" << m << ")]\n";
            if (!logical)
                f << "   else if (hm /= 0) then\n    res = [" << fn << "(" << a << ", dim=dm, mask=" << m << ")]\n";
            f << "   else\n    res = [" << wrap(fn + "(" + arg + ", dim=dm)") << "]\n   end if\n";
        }
    }
    f << "  case (110)\n   res = [dot_product(a1, mv)]\n  end select\n"
         "  write(11,*) size(res)\n  write(11,*) res\n  deallocate(v, mv)\n end do\nend program\n";
    return f.str();
}

struct Case {
    int op, rank, dim, masked, layout;
    int e[3] = {1, 1, 1};
    int lower[3] = {1, 1, 1};
    std::vector<int32_t> v, mv;
    bool supplied;
};

std::vector<Case> make_cases(int count) {
    std::mt19937 rng(20261122);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    std::vector<Case> cases;
    for (int i = 0; i < count; ++i) {
        Case c;
        c.op = pick(SUM, DOT);
        c.rank = c.op == DOT ? 1 : pick(1, 3);
        const int maxe[4] = {0, 8, 5, 3};
        int n = 1;
        for (int d = 0; d < c.rank; ++d) {
            c.e[d] = pick(0, 5) == 0 ? pick(0, 1) : pick(1, maxe[c.rank]);
            c.lower[d] = pick(-3, 3);
            n *= c.e[d];
        }
        c.dim = c.op == DOT || pick(0, 2) == 0 ? 0 : pick(1, c.rank);
        c.masked = c.op < COUNT && pick(0, 1);
        c.layout = n == 0 ? 0 : pick(0, 2);
        c.supplied = pick(0, 1);
        const int span = c.op == PRODUCT ? 2 : 5;
        for (int k = 0; k < n; ++k) c.v.push_back(pick(-span, span));
        for (int k = 0; k < n; ++k) c.mv.push_back(c.op == DOT ? pick(-5, 5) : pick(0, 2) != 0);
        cases.push_back(c);
    }
    return cases;
}

// An operand holding `values` in array-element order: contiguous with the
// case's lower bounds (layout 0), a section reversing dimension 1 (layout
// 1) or taking every second element of the last dimension (layout 2).
struct Operand {
    std::unique_ptr<Array> store;
    std::unique_ptr<Section> sec;
    ArrDesc* desc;
    Operand(const Case& c, const std::vector<int32_t>& values) {
        std::vector<std::pair<int32_t, int32_t>> b;
        for (int d = 0; d < c.rank; ++d) {
            int ext = c.layout == 2 && d == c.rank - 1 ? 2 * c.e[d] : c.e[d];
            int lo = c.layout == 0 ? c.lower[d] : 1;
            b.push_back({lo, lo + ext - 1});
        }
        store = c.rank == 1   ? std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{b[0]}, 4)
                : c.rank == 2 ? std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{b[0], b[1]}, 4)
                              : std::make_unique<Array>(
                                    std::initializer_list<std::pair<int32_t, int32_t>>{b[0], b[1], b[2]}, 4);
        desc = store->desc();
        if (c.layout != 0) {
            Sub s[3];
            for (int d = 0; d < c.rank; ++d) s[d] = tri(1, c.e[d]);
            if (c.layout == 1) s[0] = tri(c.e[0], 1, -1);
            else s[c.rank - 1] = tri(1, 2 * c.e[c.rank - 1] - 1, 2);
            sec = c.rank == 1   ? std::make_unique<Section>(*store, std::initializer_list<Sub>{s[0]})
                  : c.rank == 2 ? std::make_unique<Section>(*store, std::initializer_list<Sub>{s[0], s[1]})
                                : std::make_unique<Section>(*store, std::initializer_list<Sub>{s[0], s[1], s[2]});
            desc = sec->desc();
        }
        size_t k = 0;
        for (auto* p = static_cast<int32_t*>(f90_FirstElemAddr(desc)); p;
             p = static_cast<int32_t*>(f90_NextElemAddr()))
            *p = values[k++];
    }
};

std::vector<int64_t> elements(ArrDesc* r) {
    std::vector<int64_t> out;
    for (auto* p = static_cast<int32_t*>(f90_FirstElemAddr(r)); p; p = static_cast<int32_t*>(f90_NextElemAddr()))
        out.push_back(*p);
    return out;
}

std::vector<int64_t> ours(const Case& c) {
    using Fn = void (*)(ArgList*);
    const Fn fns[] = {nullptr, f90_sumi4, f90_prodi4, f90_maxvali4, f90_minvali4, f90_maxloci4,
                      f90_minloci4, f90_count4, f90_all4, f90_any4};
    if (c.op == DOT) {
        Operand a(c, c.v), b(c, c.mv);
        Args args;
        args.addr(1, a.desc).addr(2, b.desc).check();
        f90_dotpri4(args.get());
        int32_t v;
        std::memcpy(&v, args.a.Result.bytes, 4);
        return {v};
    }
    std::vector<int32_t> truth;
    for (int32_t m : c.mv) truth.push_back(m ? (m * 256) : 0);  // any nonzero bit is true
    Operand a(c, c.op >= COUNT ? truth : c.v);
    Case mc = c;
    mc.layout = 0;
    Operand m(mc, truth);
    Red red(a.desc);
    red.check();
    if (c.dim) red.dim(c.dim);
    if (c.masked) red.mask(m.desc);
    const bool dim_result = c.dim && c.rank > 1;
    Array scalar(4);
    std::unique_ptr<Array> given;
    if (!dim_result && c.op != MAXLOC && c.op != MINLOC) {
        red.into(scalar);
    } else if (c.supplied && dim_result) {
        std::vector<std::pair<int32_t, int32_t>> b;
        for (int d = 0; d < c.rank; ++d)
            if (d != c.dim - 1) b.push_back({1, c.e[d]});
        given = b.size() == 1 ? std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{b[0]}, 4)
                              : std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{b[0], b[1]}, 4);
        red.into(given->desc());
    }
    fns[c.op](red);
    return elements(red.res);
}

TEST(Differential, AgainstGnuFortran) {
    if (std::system("gfortran --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "gfortran not found: differential test skipped";
    std::string dir = ::testing::TempDir() + "reduce_diff_" + std::to_string(getpid());
    ASSERT_EQ(std::system(("mkdir -p " + dir).c_str()), 0);
    std::ofstream(dir + "/drv.f90") << driver_source();
    ASSERT_EQ(std::system(("gfortran -O0 -o " + dir + "/drv " + dir + "/drv.f90").c_str()), 0);
    std::vector<Case> cases = make_cases(600);
    {
        std::ofstream in(dir + "/in.txt");
        in << cases.size() << "\n";
        for (const Case& c : cases) {
            in << c.op << " " << c.rank << " " << c.dim << " " << c.masked << " " << c.e[0] << " " << c.e[1] << " "
               << c.e[2] << "\n";
            for (int32_t x : c.v) in << x << " ";
            in << "\n";
            for (int32_t x : c.mv) in << x << " ";
            in << "\n";
        }
    }
    ASSERT_EQ(std::system((dir + "/drv " + dir + "/in.txt " + dir + "/out.txt").c_str()), 0);
    std::ifstream out(dir + "/out.txt");
    int compared = 0;
    for (size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        size_t n;
        ASSERT_TRUE(out >> n);
        std::vector<int64_t> expect(n);
        for (auto& x : expect) out >> x;
        bool whole_loc = (c.op == MAXLOC || c.op == MINLOC) && (c.dim == 0 || c.rank == 1);
        if (whole_loc && c.dim == 0) {
            // An empty selection gives the marker (0, 1, ..., 1), not zeros.
            bool any = false;
            for (size_t k = 0; k < c.v.size(); ++k) any |= !c.masked || c.mv[k];
            if (!any)
                for (size_t k = 0; k < expect.size(); ++k) expect[k] = k == 0 ? 0 : 1;
        }
        std::vector<int64_t> got = ours(c);
        if (c.masked && c.dim && c.rank > 1 && c.e[c.dim - 1] == 0 && expect.empty()) {
            // gfortran returns an empty array for a masked reduction along
            // an empty DIM; every element is the identity (start value).
            int64_t n = 1;
            for (int d = 0; d < c.rank; ++d)
                if (d != c.dim - 1) n *= c.e[d];
            const int64_t identity[] = {0, 0, 1, INT32_MIN, INT32_MAX, 0, 0};
            expect.assign(n, identity[c.op]);
        }
        EXPECT_EQ(ours(c), expect) << "case " << i << " op " << kFortranName[c.op] << " rank " << c.rank << " dim "
                                   << c.dim << " mask " << c.masked << " layout " << c.layout << " extents "
                                   << c.e[0] << "," << c.e[1] << "," << c.e[2];
        ++compared;
    }
    EXPECT_EQ(compared, 600);
    std::system(("rm -rf " + dir).c_str());
}

}  // namespace
}  // namespace rtest
