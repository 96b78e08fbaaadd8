#include <stdio.h>
#include <tn/TuningInterface.h>

/* Prints the current value of setting 25 of the server that the argument names. */
int main(int argc, char** argv) {
  TnHandle engine = TN_NO_HANDLE;
  int32_t value = 0;
  TnStatus status = TN_SUCCESS;

  if (argc != 2 || TnStart(0) != TN_SUCCESS) return 2;
  status = TnConnectServer(argv[1], "", "", &engine);
  if (status == TN_SUCCESS) {
    status = TnGetLongValue(engine, 25, &value, TN_CURRENT_VALUE);
    TnDisconnect(engine);
  }
  TnStop(0);
  if (status == TN_SUCCESS) printf("%d\n", value);
  if (status != TN_SUCCESS) fprintf(stderr, "status %d\n", status);
  return status != TN_SUCCESS;
}
