#include "app/application.h"

int main() {
  return tolvane::runApplication();
}
