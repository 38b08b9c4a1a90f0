# Each target only runs its script.
.PHONY: run test build bench check package clean
run:
	@scripts/run
test:
	@scripts/test
build:
	@scripts/build
bench:
	@scripts/bench
check:
	@scripts/check
package:
	@scripts/package
clean:
	rm -rf build
