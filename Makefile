# make demo   - install what is missing, build, run the example program
# make check  - install what is missing, build and test the 64-bit, 32-bit and
#               sanitizer builds, cross-build the Windows DLLs, check exports
# make tsan   - build the library with ThreadSanitizer (GCC, -O2)
# make bench  - benchmarks side by side with GNU Fortran and OpenBLAS
# make package - Debian packages (runtime, dev) and a zip of the Windows DLLs
.PHONY: demo check tsan bench test-% mingw clean package demo-gfortran bench-gfortran

SHELL := /bin/bash
EXPORTS := src/intrins.exports

demo:
	tools/install-deps demo
	cmake --preset default > /dev/null
	cmake --build --preset default --target intrins_demo
	build/default/examples/intrins_demo
	@$(MAKE) --no-print-directory demo-gfortran

check: 
	tools/install-deps check
	$(MAKE) --no-print-directory test-default test-x86 test-asan mingw
	@echo "make check: all builds passed"

# INTRINS_EMULATOR=qemu-i386 runs the 32-bit tests emulated on any machine.
test-%:
	cmake --preset $* $(if $(INTRINS_EMULATOR),-DINTRINS_EMULATOR=$(INTRINS_EMULATOR)) > /dev/null
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

package:
	tools/install-deps package
	cmake --preset default > /dev/null
	cmake --build --preset default --target intrins_install_set
	cpack --config build/default/CPackConfig.cmake
	cmake --preset mingw-x86 > /dev/null
	cmake --build --preset mingw-x86 --target intrins_install_set
	cpack --config build/mingw-x86/CPackConfig.cmake
	@ls build/default/packages/*.deb build/mingw-x86/packages/*.zip

clean:
	rm -rf build

# The GNU Fortran adapter: a plain gfortran program run on libgfortran alone,
# then with libintrins_gfortran preloaded; its trace names the calls served.
GF_ADAPTER := build/default/adapters/gfortran/libintrins_gfortran.so
demo-gfortran:
	cmake --build --preset default --target intrins_gfortran
	gfortran -O0 examples/gfortran_demo.f90 -o build/default/examples/gfortran_demo
	@echo "--- libgfortran alone"
	@build/default/examples/gfortran_demo
	@echo "--- LD_PRELOAD=$(GF_ADAPTER) INTRINS_GFORTRAN_TRACE=1"
	@INTRINS_GFORTRAN_TRACE=1 LD_PRELOAD=$(GF_ADAPTER) build/default/examples/gfortran_demo

# The adapter's benchmark: one gfortran program run without and with it.
bench-gfortran:
	tools/install-deps bench
	cmake --preset bench > /dev/null
	cmake --build --preset bench --target bench_gfortran_adapter intrins_gfortran
	bench/gfortran/run.sh build/bench/bench/bench_gfortran_adapter build/bench/adapters/gfortran/libintrins_gfortran.so
