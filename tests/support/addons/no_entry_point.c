/* A shared object that loads but exports no process_refs, only a near miss. */

__attribute__((visibility("default"))) int process_ref(void)
{
    return 0;
}
