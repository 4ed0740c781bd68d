/* install_consumer.c: a program built against an installed kurvo, as a packager would. */
#include <kurvo.h>

#include <stdio.h>
#include <string.h>

int main(void) {
  char hex[5];
  convertToHex(2, (const unsigned char *)"\x12\xef", hex);
  if (strcmp(hex, "12EF") != 0 || kFileNameMatch("notes.txt", "*.txt") != 1) {
    fprintf(stderr, "install_consumer: unexpected results\n");
    return 1;
  }
  return 0;
}
