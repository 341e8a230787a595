#include "app/main_procedure.h"

int main(int argc, char** argv) {
    return qumbrel::qumbrel_main(argc, argv);
}
