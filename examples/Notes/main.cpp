#include "AppDelegate.h"
#include "UIKit/UIApplication.h"

int main(int argc, char** argv) {
  return ios::UIApplicationMain(argc, argv, std::make_shared<Notes::AppDelegate>());
}
