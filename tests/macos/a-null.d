null.o: /dev/null /work/wt/wire/tests/macos/GNUstep.h
/work/wt/wire/tests/macos/GNUstep.h:
