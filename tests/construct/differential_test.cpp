// A randomized differential test against GNU Fortran: random shapes of rank
// 1 to 3 (extents 0 to 5), random lower bounds and strided sections on the
// library side; the expected results come from differential_driver.f90,
// compiled and run here when gfortran is on the machine.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>

#include "helpers.h"

namespace ctest {
namespace {

using Values = std::vector<int64_t>;

// An INTEGER(4) operand of rank 0 to 3: contiguous with the given lower
// bound, or every second element of a larger array along dimension 1.
class Operand {
public:
    Operand(std::vector<int> ext, const std::vector<int32_t>& vals, bool strided, int lo) {
        int e[3] = {1, 1, 1};
        for (size_t d = 0; d < ext.size(); ++d) e[d] = ext[d];
        const int f = strided ? 2 : 1;
        auto b = [&](int d) { return std::pair<int32_t, int32_t>{lo, lo + (d == 0 ? f : 1) * e[d] - 1}; };
        switch (ext.size()) {
            case 0: store_ = std::make_unique<Array>(4); break;
            case 1: store_ = std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{b(0)}, 4); break;
            case 2: store_ = std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{b(0), b(1)}, 4); break;
            default: store_ = std::make_unique<Array>(std::initializer_list<std::pair<int32_t, int32_t>>{b(0), b(1), b(2)}, 4);
        }
        for (size_t i = 0; i < vals.size(); ++i) {
            size_t i1 = i % e[0], rest = i / e[0];
            store_->at<int32_t>(static_cast<int64_t>(i1 * f + rest * f * e[0])) = vals[i];
        }
        if (strided && !ext.empty()) {
            Sub s0 = tri(lo, lo + 2 * e[0] - 2, 2), s1 = tri(lo, lo + e[1] - 1), s2 = tri(lo, lo + e[2] - 1);
            if (ext.size() == 1) sec_ = std::make_unique<Section>(*store_, std::initializer_list<Sub>{s0});
            if (ext.size() == 2) sec_ = std::make_unique<Section>(*store_, std::initializer_list<Sub>{s0, s1});
            if (ext.size() == 3) sec_ = std::make_unique<Section>(*store_, std::initializer_list<Sub>{s0, s1, s2});
        }
    }
    ArrDesc* desc() { return sec_ ? sec_->desc() : store_->desc(); }

private:
    std::unique_ptr<Array> store_;
    std::unique_ptr<Section> sec_;
};

class Gen {
public:
    explicit Gen(unsigned seed) : rng_(seed) {}
    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng_); }
    std::vector<int> shape(int rank) {
        std::vector<int> e;
        for (int d = 0; d < rank; ++d) e.push_back(pick(0, 9) == 0 ? 0 : pick(1, 5));
        return e;
    }
    std::vector<int32_t> values(int64_t n, int lo = -50, int hi = 50) {
        std::vector<int32_t> v;
        for (int64_t i = 0; i < n; ++i) v.push_back(pick(lo, hi));
        return v;
    }
    Operand operand(const std::vector<int>& ext, const std::vector<int32_t>& v) {
        return Operand(ext, v, pick(0, 2) == 0, pick(-2, 2));
    }

private:
    std::mt19937 rng_;
};

int64_t size_of(const std::vector<int>& e) {
    int64_t n = 1;
    for (int x : e) n *= x;
    return n;
}

// Writes extents padded to 3 and the data, the way the driver reads them.
void put3(std::ostream& o, const std::vector<int>& e, const std::vector<int32_t>& v) {
    for (int d = 0; d < 3; ++d) o << (d < static_cast<int>(e.size()) ? e[d] : 1) << ' ';
    o << '\n';
    for (int32_t x : v) o << x << ' ';
    o << '\n';
}
void put_list(std::ostream& o, const std::vector<int32_t>& v) {
    for (int32_t x : v) o << x << ' ';
    o << '\n';
}

// The library result: count, then the elements (as signed integers of elsize bytes).
Values collect(ArrDesc* r, int elsize) {
    Values out{r->RANK > 0 ? int64_t{r->EXTENT} : 1};
    for (char* p = static_cast<char*>(f90_FirstElemAddr(r)); p; p = static_cast<char*>(f90_NextElemAddr())) {
        int64_t x = 0;
        if (elsize == 2) x = *reinterpret_cast<int16_t*>(p);
        if (elsize == 4) x = *reinterpret_cast<int32_t*>(p);
        if (elsize == 8) x = *reinterpret_cast<int64_t*>(p);
        out.push_back(x);
    }
    f90_freespace(r->BASE);
    return out;
}

// One random case: appends the driver's input and returns the library's answer.
Values one_case(Gen& g, int op, std::ostream& in) {
    Desc r;
    Args args;
    args.addr(0, r.get()).check();
    in << op << '\n';
    switch (op) {
        case 1: {  // RESHAPE
            const int rank_ = g.pick(1, 3);
            std::vector<int> shp = g.shape(rank_);
            const int64_t need = size_of(shp);
            const bool pad = g.pick(0, 1) == 1;
            const int s = pad ? g.pick(0, static_cast<int>(need) + 2) : static_cast<int>(need) + g.pick(0, 3);
            std::vector<int32_t> src = g.values(s), pv = g.values(g.pick(1, 4));
            std::vector<int> perm = {0, 1, 2};
            std::shuffle(perm.begin(), perm.begin() + rank_, std::mt19937(g.pick(0, 1000)));
            const bool order = g.pick(0, 1) == 1;
            in << s << '\n';
            put_list(in, src);
            for (int d = 0; d < 3; ++d) in << (d < rank_ ? shp[d] : 1) << ' ';
            in << (pad ? 1 : 0) << '\n';
            if (pad) {
                in << pv.size() << '\n';
                put_list(in, pv);
            }
            in << (order ? 1 : 0) << ' ' << perm[0] + 1 << ' ' << perm[1] + 1 << ' ' << perm[2] + 1 << '\n';
            Operand so = g.operand({s}, src), po = g.operand({static_cast<int>(pv.size())}, pv);
            std::vector<int32_t> sv(shp.begin(), shp.end()), ov;
            for (int d = 0; d < rank_; ++d) ov.push_back(perm[d] + 1);
            Operand sho({rank_}, sv, false, 1), oro({rank_}, ov, false, 0);
            args.addr(1, so.desc()).addr(2, sho.desc());
            if (pad) args.addr(3, po.desc());
            if (order) args.addr(4, oro.desc());
            f90_reshape4(args.get());
            return collect(r.get(), 4);
        }
        case 2: {  // PACK
            std::vector<int> e = g.shape(g.pick(1, 3));
            std::vector<int32_t> a = g.values(size_of(e)), m = g.values(size_of(e), 0, 1);
            int64_t t = 0;
            for (int32_t x : m) t += x != 0;
            const bool vec = g.pick(0, 1) == 1;
            std::vector<int32_t> v = g.values(t + g.pick(0, 3));
            put3(in, e, a);
            put3(in, e, m);
            in << (vec ? 1 : 0) << '\n';
            if (vec) in << v.size() << '\n', put_list(in, v);
            Operand ao = g.operand(e, a), mo = g.operand(e, m), vo = g.operand({static_cast<int>(v.size())}, v);
            args.addr(1, ao.desc()).addr(2, mo.desc());
            if (vec) args.addr(3, vo.desc());
            f90_pack4(args.get());
            return collect(r.get(), 4);
        }
        case 3: {  // UNPACK
            std::vector<int> e = g.shape(g.pick(1, 3));
            std::vector<int32_t> m = g.values(size_of(e), 0, 1), f = g.values(size_of(e));
            int64_t t = 0;
            for (int32_t x : m) t += x != 0;
            std::vector<int32_t> v = g.values(t + g.pick(0, 2));
            const bool scalar = g.pick(0, 1) == 1;
            put3(in, e, m);
            in << v.size() << '\n';
            put_list(in, v);
            in << (scalar ? 1 : 0) << '\n';
            if (scalar) in << 77 << "\n";
            else put3(in, e, f);
            Operand mo = g.operand(e, m), vo = g.operand({static_cast<int>(v.size())}, v), fo = g.operand(e, f);
            Operand so({}, {77}, false, 1);
            args.addr(1, vo.desc()).addr(2, mo.desc()).addr(3, scalar ? so.desc() : fo.desc());
            f90_unpack4(args.get());
            return collect(r.get(), 4);
        }
        case 4: {  // SPREAD
            const int rank_ = g.pick(0, 2);
            std::vector<int> e = g.shape(rank_);
            std::vector<int32_t> a = g.values(size_of(e));
            const int dim = g.pick(1, rank_ + 1), nc = g.pick(0, 3);
            in << rank_ << '\n';
            if (rank_ == 0) in << a[0] << ' ' << dim << ' ' << nc << '\n';
            else put3(in, e, a), in << dim << ' ' << nc << '\n';
            Operand ao = g.operand(e, a);
            args.addr(1, ao.desc()).value(2, dim).value(3, nc);
            f90_spread4(args.get());
            return collect(r.get(), 4);
        }
        case 5: {  // TRANSPOSE
            std::vector<int> e = g.shape(2);
            std::vector<int32_t> a = g.values(size_of(e));
            in << e[0] << ' ' << e[1] << '\n';
            put_list(in, a);
            Operand ao = g.operand(e, a);
            args.addr(1, ao.desc());
            f90_transpose4(args.get());
            return collect(r.get(), 4);
        }
        case 6:
        case 7: {  // CSHIFT, EOSHIFT
            const int rank_ = g.pick(1, 3);
            std::vector<int> e = g.shape(rank_), o;
            std::vector<int32_t> a = g.values(size_of(e));
            const int dim = g.pick(1, rank_);
            for (int d = 0; d < rank_; ++d)
                if (d != dim - 1) o.push_back(e[d]);
            const bool scalar_shift = g.pick(0, 1) == 1, scalar_bnd = g.pick(0, 1) == 1;
            std::vector<int32_t> sh = g.values(size_of(o), -7, 7), bd = g.values(size_of(o));
            const int32_t s = g.pick(-7, 7), b = g.pick(-50, 50);
            put3(in, e, a);
            in << dim << ' ' << (scalar_shift ? 1 : 0) << '\n';
            auto put2 = [&](const std::vector<int32_t>& v) {
                for (int d = 0; d < 2; ++d) in << (d < static_cast<int>(o.size()) ? o[d] : 1) << ' ';
                in << '\n';
                put_list(in, v);
            };
            if (scalar_shift) in << s << '\n';
            else put2(sh);
            if (op == 7) {
                in << (scalar_bnd ? 1 : 0) << '\n';
                if (scalar_bnd) in << b << '\n';
                else put2(bd);
            }
            Operand ao = g.operand(e, a), so({}, {s}, false, 1), sho = g.operand(o, sh), bo({}, {b}, false, 1),
                    bdo = g.operand(o, bd);
            args.addr(1, ao.desc()).addr(2, scalar_shift ? so.desc() : sho.desc());
            if (op == 6) {
                args.value(3, dim);
                f90_cshift4(args.get());
            } else {
                args.addr(3, scalar_bnd ? bo.desc() : bdo.desc()).value(4, dim);
                f90_eoshift4(args.get());
            }
            return collect(r.get(), 4);
        }
        default: {  // TRANSFER
            const int mode = g.pick(1, 3);
            const int s = mode == 3 ? g.pick(2, 5) : g.pick(0, 5);
            std::vector<int32_t> v = g.values(s, -100000, 100000);
            const int n = g.pick(0, 2 * s);
            in << s << '\n';
            put_list(in, v);
            in << mode << ' ' << n << '\n';
            Operand so = g.operand({s}, v);
            Array m2({{1, 1}}, 2), m8(8);
            args.addr(1, so.desc()).addr(2, mode == 3 ? m8.desc() : m2.desc());
            if (mode == 2) args.value(3, n);
            if (mode == 3) f90_transfer8(args.get());
            else f90_transfer2(args.get());
            return collect(r.get(), mode == 3 ? 8 : 2);
        }
    }
}

TEST(Differential, AgainstGnuFortran) {
    if (std::system("gfortran --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "gfortran not found: skipped";
    char dir[] = "/tmp/construct_diffXXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    const std::string d = dir, src = __FILE__;
    const std::string driver = src.substr(0, src.rfind('/')) + "/differential_driver.f90";
    ASSERT_EQ(std::system(("gfortran -O1 -o " + d + "/drv " + driver + " 2>" + d + "/log").c_str()), 0);
    Gen g(20261122);
    std::ostringstream in;
    std::vector<Values> lib;
    std::vector<int> ops;
    for (int i = 0; i < 400; ++i) {
        ops.push_back(1 + i % 8);
        lib.push_back(one_case(g, ops.back(), in));
    }
    std::ofstream(d + "/in") << in.str();
    ASSERT_EQ(std::system((d + "/drv < " + d + "/in > " + d + "/out").c_str()), 0);
    std::ifstream out(d + "/out");
    std::string line;
    const char* names[] = {"", "RESHAPE", "PACK", "UNPACK", "SPREAD", "TRANSPOSE", "CSHIFT", "EOSHIFT", "TRANSFER"};
    for (size_t i = 0; i < lib.size(); ++i) {
        ASSERT_TRUE(std::getline(out, line)) << "case " << i;
        std::istringstream ls(line);
        Values ref;
        for (int64_t x; ls >> x;) ref.push_back(x);
        EXPECT_EQ(lib[i], ref) << "case " << i << " " << names[ops[i]];
    }
    EXPECT_FALSE(std::getline(out, line)) << "the driver wrote more results than cases";
    std::system(("rm -rf " + d).c_str());
}

}  // namespace
}  // namespace ctest
