# make demo   - install what is missing, build, run the example program
# make check  - install what is missing, build and test the 64-bit, 32-bit and
#               sanitizer builds, cross-build the Windows DLLs, check exports
# make tsan   - build the library with ThreadSanitizer (GCC, -O2)
# make bench  - benchmarks side by side with GNU Fortran and OpenBLAS
.PHONY: demo check tsan bench test-% mingw clean

SHELL := /bin/bash
EXPORTS := src/intrins.exports

demo:
	tools/install-deps demo
	cmake --preset default > /dev/null
	cmake --build --preset default --target intrins_demo
	build/default/examples/intrins_demo

check: 
	tools/install-deps check
	$(MAKE) --no-print-directory test-default test-x86 test-asan mingw
	@echo "make check: all builds passed"

test-%:
	cmake --preset $* > /dev/null
	cmake --build --preset $*
	ctest --preset $*

mingw:
	cmake --preset mingw-x86 > /dev/null
	cmake --build --preset mingw-x86
	tools/exports-check build/mingw-x86/libintrinsMD.dll $(EXPORTS)
	@i686-w64-mingw32-objdump -p build/mingw-x86/libintrinsMD.dll | awk '/DLL Name:/ { print "libintrinsMD.dll imports " $$3 }'

tsan:
	cmake --preset tsan > /dev/null
	cmake --build --preset tsan --target intrinsMD
	tools/exports-check build/tsan/libintrinsMD.so $(EXPORTS)

bench:
	tools/install-deps bench
	cmake --preset bench > /dev/null
	cmake --build --preset bench
	@for b in build/bench/bench/bench_*; do [ -x "$$b" ] && "$$b" $(BENCH_ARGS); done

clean:
	rm -rf build
