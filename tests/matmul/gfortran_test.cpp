// Randomized differential test against GNU Fortran's MATMUL for the integer
// kinds (exact, overflow wrapping included).  A small Fortran program is built
// with gfortran at test time (unoptimized, so that MATMUL is the runtime
// library's routine) and fed the same operands; skipped without gfortran.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "support/arrays.h"

namespace {

// The Fortran program: one case per integer kind, the same lines for each.
std::string program() {
    std::string decl, cases;
    for (const char* k : {"1", "2", "4", "8"}) {
        const std::string a = std::string("a") + k, b = std::string("b") + k, v = std::string("v") + k;
        decl += std::string("  integer(") + k + "), allocatable :: " + a + "(:,:), " + b + "(:,:), " + v + "(:)\n";
        cases += std::string("    case (") + k + ")\n      allocate(" + a + "(m, k), " + b + "(k, n), " + v +
                 "(k)); read(*, *) " + a + ", " + b + ", " + v + "\n      if (form == 0) then; write(*, '(*(I0, 1X))') matmul(" +
                 a + ", " + b + "); else; write(*, '(*(I0, 1X))') matmul(" + a + ", " + v + "); end if\n      deallocate(" +
                 a + ", " + b + ", " + v + ")\n";
    }
    return "program mm\n  implicit none\n  integer :: kind, form, m, n, k\n" + decl +
           "  do\n    read(*, *, end=9) kind, form, m, n, k\n    select case (kind)\n" + cases +
           "    end select\n  end do\n9 continue\nend program\n";
}

struct Case {
    int kind, form, m, n, k;
    std::vector<int64_t> a, b, v, ours;
};

template <class E>
std::vector<int64_t> run_ours(Case& c, void (*f)(ArgList*)) {
    testutil::Array a({{1, c.m}, {1, c.k}}, sizeof(E)), b({{1, c.k}, {1, c.n}}, sizeof(E)), v({{1, c.k}}, sizeof(E));
    for (std::size_t i = 0; i < c.a.size(); ++i) a.at<E>(int64_t(i)) = static_cast<E>(c.a[i]);
    for (std::size_t i = 0; i < c.b.size(); ++i) b.at<E>(int64_t(i)) = static_cast<E>(c.b[i]);
    for (std::size_t i = 0; i < c.v.size(); ++i) v.at<E>(int64_t(i)) = static_cast<E>(c.v[i]);
    testutil::Desc r;
    testutil::Args args;
    args.addr(0, r.get()).addr(1, a.desc()).addr(2, c.form == 0 ? b.desc() : v.desc()).check();
    f(args.get());
    std::vector<int64_t> out;
    for (int32_t i = 0; i < r->EXTENT; ++i) out.push_back(reinterpret_cast<E*>(r->BASE)[i]);
    return out;
}

TEST(MatmulAgainstGFortran, IntegerKindsRandomized) {
    if (std::system("gfortran --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "gfortran not available";
    char dir[] = "/tmp/matmul_gfXXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string d(dir);
    std::ofstream(d + "/mm.f90") << program();
    ASSERT_EQ(std::system(("gfortran -O0 -o " + d + "/mm " + d + "/mm.f90").c_str()), 0);

    std::mt19937_64 rng(2024);
    std::vector<Case> cases;
    std::ostringstream in;
    for (int kind : {1, 2, 4, 8})
        for (int round = 0; round < 6; ++round) {
            Case c{kind, round % 3 == 2 ? 1 : 0, int(rng() % 70) + 1, int(rng() % 40) + 1, int(rng() % 150) + 1, {}, {}, {}, {}};
            if (c.form == 1) c.n = 1;
            auto draw = [&](std::size_t n, std::vector<int64_t>& to) {
                for (std::size_t i = 0; i < n; ++i) {
                    uint64_t r = rng();
                    int64_t x = kind == 1 ? int8_t(r) : kind == 2 ? int16_t(r) : kind == 4 ? int32_t(r) : int64_t(r);
                    to.push_back(x);
                }
            };
            draw(std::size_t(c.m) * c.k, c.a);
            draw(std::size_t(c.k) * c.n, c.b);
            draw(std::size_t(c.k), c.v);
            in << kind << ' ' << c.form << ' ' << c.m << ' ' << c.n << ' ' << c.k << '\n';
            for (auto* vec : {&c.a, &c.b, &c.v}) {
                for (int64_t x : *vec) in << x << ' ';
                in << '\n';
            }
            switch (kind) {
            case 1: c.ours = run_ours<int8_t>(c, f90_matmuli1); break;
            case 2: c.ours = run_ours<int16_t>(c, f90_matmuli2); break;
            case 4: c.ours = run_ours<int32_t>(c, f90_matmuli4); break;
            default: c.ours = run_ours<int64_t>(c, f90_matmuli8); break;
            }
            cases.push_back(std::move(c));
        }
    std::ofstream(d + "/in.txt") << in.str();
    ASSERT_EQ(std::system((d + "/mm < " + d + "/in.txt > " + d + "/out.txt").c_str()), 0);
    std::ifstream out(d + "/out.txt");
    for (const Case& c : cases) {
        std::string line;
        ASSERT_TRUE(std::getline(out, line)) << "missing output for kind " << c.kind;
        std::istringstream ls(line);
        std::vector<int64_t> theirs;
        for (int64_t x; ls >> x;) theirs.push_back(x);
        EXPECT_EQ(theirs, c.ours) << "kind " << c.kind << " form " << c.form << " " << c.m << "x" << c.n << "x" << c.k;
    }
    std::system(("rm -rf " + d).c_str());
}

}  // namespace
