/*
 * How a service reads its settings. The server name is that of knob's -S:
 *
 *   cc read-settings.c $(pkg-config --cflags --libs tn) -o read-settings
 *   ./read-settings registry:orders.toml
 */
#include <stdio.h>
#include <tn/TuningInterface.h>

enum { POOL_SIZE = 1001, ACCEPT_ORDERS = 2001, ORDER_NOTICE = 2004 };

int main(int count, char** words) {
  TnHandle registry = TN_NO_HANDLE;
  TnStatus status = TN_INVALID_ARGUMENT;
  int32_t poolSize = 0;
  int16_t acceptOrders = 0;
  char notice[TN_TEXT_SIZE];
  int size = sizeof notice;

  TnStart(0);
  if (count == 2) status = TnConnectServer(words[1], "", "", &registry);
  if (status == TN_SUCCESS)
    status = TnGetLongValue(registry, POOL_SIZE, &poolSize, TN_CURRENT_VALUE);
  if (status == TN_SUCCESS)
    status = TnGetBooleanValue(registry, ACCEPT_ORDERS, &acceptOrders, TN_CURRENT_VALUE);
  if (status == TN_SUCCESS)
    status = TnGetStringValue(registry, ORDER_NOTICE, &size, notice, TN_CURRENT_VALUE);
  TnStop(0);

  if (status != TN_SUCCESS) {
    fprintf(stderr, "The settings cannot be read: status %d\n", status);
    return 1;
  }
  printf("pool of %d, orders %s, \"%s\"\n", (int)poolSize, acceptOrders ? "open" : "closed",
         notice);
  return 0;
}
