# Each target only runs its script.
.PHONY: run test build bench check clean
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
clean:
	rm -rf build
