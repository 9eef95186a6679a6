#include "Application.hpp"

int main(int argc, char** argv)
{
    return tavrin::app::runApplication(argc, argv);
}
