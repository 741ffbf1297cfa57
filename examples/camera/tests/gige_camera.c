/* A GigE Vision camera at an address of this machine, until it is killed. usage: kro-gige-camera ADDRESS SERIAL */
#include <arv.h>
#include <stdio.h>
#include <unistd.h>

int main(int count, char** values) {
    ArvGvFakeCamera* camera;

    if (count != 3)
        return 2;
    camera = arv_gv_fake_camera_new(values[1], values[2]);
    if (camera == NULL || !arv_gv_fake_camera_is_running(camera))
        return 1;
    puts("running");
    fflush(stdout);
    for (;;)
        pause();
}
